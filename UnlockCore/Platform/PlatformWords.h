// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <string>

namespace marrowby {

/// What the sentences for the user call the parts of one platform. All of it is in the catalogue.
struct PlatformWords {
    /// A right that the user gives the application.
    struct Right {
        /// Where the system's settings switch it; empty where they don't.
        Phrase place;
        /// What to do instead where there is no such place, as a sentence.
        Phrase remedy;

        [[nodiscard]] bool hasPlace() const { return !place.empty(); }
        /// `sentence`, such as “Turned off in {place}.”, where there is a place; else the remedy.
        [[nodiscard]] std::string advice(Phrase sentence) const {
            return hasPlace() ? translated(sentence, {{"place", place}}) : translated(remedy);
        }
    };

    /// The account's password: in a sentence, at its start, on a button.
    struct Password {
        Phrase inSentence;
        Phrase atStart;
        Phrase onButton;
    };

    /// What the owner is asked for before the key is released.
    struct OwnerCheck {
        /// “Needs …”, “Ask for … again”.
        Phrase name;
        /// The name, and what else will do; begins no sentence.
        Phrase orPassword;
        /// “Marrowby Unlock needs your … first.”
        Phrase yours;
        /// “… was cancelled”.
        Phrase prompt;
        /// The button that starts it.
        Phrase button;
        /// “A camera sees less than … feels.”
        Phrase finger;
        /// What to do where it can't be asked, as a sentence.
        Phrase remedy;
    };

    /// Typing into the lock screen.
    struct Typing {
        /// “Marrowby Unlock needs … to type your password”.
        Phrase right;
        /// The right's name at the start of a line.
        Phrase rightAtStart;
        Phrase allowed;
        Phrase notAllowed;
        /// What the right is for.
        Phrase purpose;
    };

    /// Where the key is kept: in a sentence and at its start.
    struct KeyStore {
        Phrase inSentence;
        Phrase atStart;
        /// What to do where it keeps nothing, as a sentence.
        Phrase remedy;
    };

    /// Of a model's file that is gone: where it was expected, and what to do, as a sentence.
    struct MissingModel {
        Phrase place;
        Phrase remedy;
    };

    Phrase computer;
    /// At the start of a sentence.
    Phrase system;
    Password password;
    OwnerCheck ownerCheck;
    KeyStore keyStore;
    Typing typing;
    /// “you touch a key or …”.
    Phrase pointer;
    /// Where the island is, with its preposition.
    Phrase island;
    /// Where the user opens the application: “from …”.
    Phrase applications;
    MissingModel missingModel;

    Right camera;
    Right accessibility;
    Right inputMonitoring;
};

}  // namespace marrowby
