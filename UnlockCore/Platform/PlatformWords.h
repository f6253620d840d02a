// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace marrowby {

/// What the sentences for the user call the parts of one platform. All of it is static text.
struct PlatformWords {
    /// A right that the user gives the application.
    struct Right {
        /// Where the system's settings switch it; empty where they don't.
        std::string_view place;
        /// What to do instead where there is no such place, as a sentence.
        std::string_view remedy;

        [[nodiscard]] bool hasPlace() const { return !place.empty(); }
        /// `switchIn`, such as “Turned off in ”, and the place, as a sentence; else the remedy.
        [[nodiscard]] std::string advice(std::string_view switchIn) const {
            if (!hasPlace()) return std::string(remedy);
            return std::string(switchIn).append(place) + ".";
        }
    };

    /// The account's password: in a sentence, at its start, on a button.
    struct Password {
        std::string_view inSentence;
        std::string_view atStart;
        std::string_view onButton;
    };

    /// What the owner is asked for before the key is released.
    struct OwnerCheck {
        /// “Needs …”, “Ask for … again”.
        std::string_view name;
        /// The name, and what else will do; begins no sentence.
        std::string_view orPassword;
        /// “Marrowby Unlock needs your … first.”
        std::string_view yours;
        /// “… was cancelled”.
        std::string_view prompt;
        /// The button that starts it.
        std::string_view button;
        /// “A camera sees less than … feels.”
        std::string_view finger;
        /// What to do where it can't be asked, as a sentence.
        std::string_view remedy;
    };

    /// Typing into the lock screen.
    struct Typing {
        /// “Marrowby Unlock needs … to type your password”.
        std::string_view right;
        /// The right's name at the start of a line.
        std::string_view rightAtStart;
        std::string_view allowed;
        std::string_view notAllowed;
        /// What the right is for.
        std::string_view purpose;
    };

    /// Where the key is kept: in a sentence and at its start.
    struct KeyStore {
        std::string_view inSentence;
        std::string_view atStart;
        /// What to do where it keeps nothing, as a sentence.
        std::string_view remedy;
    };

    /// Of a model's file that is gone: where it was expected, and what to do, as a sentence.
    struct MissingModel {
        std::string_view place;
        std::string_view remedy;
    };

    std::string_view computer;
    /// At the start of a sentence.
    std::string_view system;
    Password password;
    OwnerCheck ownerCheck;
    KeyStore keyStore;
    Typing typing;
    /// “you touch a key or …”.
    std::string_view pointer;
    /// Where the island is, with its preposition.
    std::string_view island;
    /// Where the user opens the application: “from …”.
    std::string_view applications;
    MissingModel missingModel;

    Right camera;
    Right accessibility;
    Right inputMonitoring;
};

}  // namespace marrowby
