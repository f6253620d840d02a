// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace marrowby {

/// What a control does.
enum class WindowControl : std::uint8_t {
    // Of the welcome window.
    goBack,
    goForward,
    understood,
    captureAgain,
    faceName,
    password,
    openSettings,
    // Of the settings window.
    fix,
    enabled,
    openAtLogin,
    returnTrigger,
    spaceTrigger,
    showsAnimation,
    strictness,
    livenessMode,
    scanSeconds,
    builtInDisplayCamera,
    externalDisplayCamera,
    autoLock,
    openVault,
    tryIt,
    addFace,
    useFace,
    renameFace,
    captureFaceAnew,
    removeFace,
    updatePassword,
    vouchForLocker,
    declineLocker,
    erase,
    quit,
    confirm,
    cancel,
    // Of the window without models.
    prepareModels,
    copyCommand,
    // Of either.
    consent,
    allowCamera,
    openCameraSettings,
    openAccessibilitySettings,
    openInputMonitoringSettings,
};

/// One control of a page; `item` is its index in a list.
struct ControlID {
    WindowControl control = WindowControl::goForward;
    std::size_t item = 0;
    friend bool operator==(const ControlID&, const ControlID&) = default;
};

struct WindowButton {
    ControlID id;
    std::string title;
    bool isEnabled = true;
    /// Return presses it.
    bool isDefault = false;
    /// Cannot be undone.
    bool isDestructive = false;
    /// For assistive technology, where the title alone doesn't say whom it is about.
    std::string spokenTitle{};
    friend bool operator==(const WindowButton&, const WindowButton&) = default;
};

namespace windowrow {

struct Heading {
    std::string text;
    friend bool operator==(const Heading&, const Heading&) = default;
};
struct Text {
    std::string text;
    friend bool operator==(const Text&, const Text&) = default;
};
/// A state, and the button that fixes it.
struct Status {
    bool isGood = false;
    std::string title;
    std::string detail;
    std::optional<WindowButton> fix;
    friend bool operator==(const Status&, const Status&) = default;
};
struct Toggle {
    ControlID id;
    std::string title;
    std::string detail;
    bool isOn = false;
    friend bool operator==(const Toggle&, const Toggle&) = default;
};
struct Choice {
    ControlID id;
    std::string title;
    std::string detail;
    std::vector<std::string> options;
    std::size_t selected = 0;
    friend bool operator==(const Choice&, const Choice&) = default;
};
struct Actions {
    std::string title;
    std::string detail;
    std::vector<WindowButton> buttons;
    friend bool operator==(const Actions&, const Actions&) = default;
};
struct TextField {
    ControlID id;
    std::string title;
    std::string text;
    friend bool operator==(const TextField&, const TextField&) = default;
};
/// At most one on a page.
struct SecretField {
    ControlID id;
    std::string title;
    friend bool operator==(const SecretField&, const SecretField&) = default;
};
/// A picture of the camera, drawn as in a mirror. Equal to its copies only.
struct CameraPicture {
    Bitmap image;
    /// To be framed, in the image's pixels.
    std::optional<Rect> face;
    friend bool operator==(const CameraPicture& one, const CameraPicture& other) {
        return one.image.sharedBytes() == other.image.sharedBytes() && one.face == other.face;
    }
};
struct Picture {
    /// What it shows, for assistive technology.
    std::string title;
    /// None yet.
    std::optional<CameraPicture> picture;
    friend bool operator==(const Picture&, const Picture&) = default;
};
/// A bar with a mark at its limit.
struct Meter {
    std::string title;
    std::string detail;
    /// Both 0…1.
    double level = 0;
    double limit = 0;
    bool isGood = false;
    friend bool operator==(const Meter&, const Meter&) = default;
};
/// The ring around the user's face during a capture.
struct Guide {
    /// 0…1.
    double progress = 0;
    /// Where the guide points, in degrees from 0 for up, clockwise.
    std::optional<double> direction;
    std::string hint;
    /// Shown inside.
    std::optional<CameraPicture> picture{};
    friend bool operator==(const Guide&, const Guide&) = default;
};
/// Newest last; scrolled to the end.
struct Log {
    std::vector<std::string> lines;
    friend bool operator==(const Log&, const Log&) = default;
};

}  // namespace windowrow

/// Rows are laid out from top to bottom.
struct WindowRow : std::variant<windowrow::Heading, windowrow::Text, windowrow::Status,
                                windowrow::Toggle, windowrow::Choice, windowrow::Actions,
                                windowrow::TextField, windowrow::SecretField, windowrow::Picture,
                                windowrow::Meter, windowrow::Guide, windowrow::Log> {
    using Heading = windowrow::Heading;
    using Text = windowrow::Text;
    using Status = windowrow::Status;
    using Toggle = windowrow::Toggle;
    using Choice = windowrow::Choice;
    using Actions = windowrow::Actions;
    using TextField = windowrow::TextField;
    using SecretField = windowrow::SecretField;
    using Picture = windowrow::Picture;
    using Meter = windowrow::Meter;
    using Guide = windowrow::Guide;
    using Log = windowrow::Log;
    using variant::variant;
};

/// Identifies a row across pages: its control, or its first button; none where it has neither.
[[nodiscard]] std::optional<ControlID> controlOf(const WindowRow& row);

/// All that a window shows. Equal pages look alike; a control keeps the focus while its id stays.
struct WindowPage {
    std::string title;
    /// Under the title.
    std::string detail;
    std::vector<WindowRow> rows;
    /// The last failure; may be empty.
    std::string problem;
    /// At the foot, from left to right.
    std::vector<WindowButton> buttons;
    friend bool operator==(const WindowPage&, const WindowPage&) = default;
};

}  // namespace marrowby
