// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/FaceScanning.h"
#include "UnlockCore/Engine/LogLine.h"
#include "UnlockCore/Engine/MatchedFace.h"
#include "UnlockCore/Engine/OverlayPhase.h"
#include "UnlockCore/Engine/PasswordHealth.h"
#include "UnlockCore/Engine/ScanObservation.h"
#include "UnlockCore/Engine/TypingOutcome.h"
#include "UnlockCore/Engine/UnlockFailure.h"
#include "UnlockCore/Engine/UnlockSnapshot.h"
#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"
#include "UnlockCore/LockWatching/UnlockTriggerPolicy.h"
#include "UnlockCore/Platform/ScreenLock.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace marrowby {

namespace unlockmachine {

enum class LookReason { wake, activity, space, hover };

/// For log lines.
[[nodiscard]] Phrase name(LookReason reason);

/// One scan in progress.
struct Scan {
    ScanID id{};
    Date startedAt;
    Date deadline;
    LookReason reason = LookReason::wake;
    bool sawFace = false;
    /// Since when the visible face matches nobody.
    std::optional<Date> wrongFaceSince{};
    std::optional<MatchedFace> match{};
    bool sawMatch = false;
    /// Of the latest matched frame.
    bool livenessConfirmed = false;
    /// Already asked in this scan.
    std::optional<LivenessPrompt> prompt{};
    /// Some frame showed a face that reaches too far over the picture's edge.
    bool sawCutOff = false;

    friend bool operator==(const Scan&, const Scan&) = default;
};

namespace phase {

/// A scan is running; the camera is on.
struct Scanning {
    Scan scan;
    friend bool operator==(const Scanning&, const Scanning&) = default;
};
/// The password was typed or the desktop asked; the screen has not unlocked yet.
struct Verifying {
    Date since;
    /// The desktop was asked.
    bool isAsked = false;
    friend bool operator==(const Verifying&, const Verifying&) = default;
};
/// The failure is shown until then; a scan may start meanwhile.
struct Failed {
    UnlockFailure failure;
    Date until;
    friend bool operator==(const Failed&, const Failed&) = default;
};
/// The screen is unlocked, or face unlock cannot act.
struct Idle {
    friend bool operator==(const Idle&, const Idle&) = default;
};
/// The screen is locked; waiting for a reason to start a scan.
struct Armed {
    friend bool operator==(const Armed&, const Armed&) = default;
};
struct Typing {
    friend bool operator==(const Typing&, const Typing&) = default;
};

}  // namespace phase

struct Phase : std::variant<phase::Scanning, phase::Verifying, phase::Failed, phase::Idle,
                            phase::Armed, phase::Typing> {
    using Scanning = phase::Scanning;
    using Verifying = phase::Verifying;
    using Failed = phase::Failed;
    using Idle = phase::Idle;
    using Armed = phase::Armed;
    using Typing = phase::Typing;
    using variant::variant;
};

namespace event {

struct Lock {
    LockEvent event = LockEvent::screenLocked;
    friend bool operator==(const Lock&, const Lock&) = default;
};
struct Activity {
    InputActivity activity;
    friend bool operator==(const Activity&, const Activity&) = default;
};
struct CameraFailed {
    std::string message;
    friend bool operator==(const CameraFailed&, const CameraFailed&) = default;
};
struct Frame {
    ScanID id{};
    ScanObservation observation;
    friend bool operator==(const Frame&, const Frame&) = default;
};
struct Typed {
    TypingOutcome outcome;
    friend bool operator==(const Typed&, const Typed&) = default;
};
struct SpaceKey {
    friend bool operator==(const SpaceKey&, const SpaceKey&) = default;
};
/// The user hovered over the island or clicked it.
struct Activate {
    friend bool operator==(const Activate&, const Activate&) = default;
};
struct SettingsChanged {
    friend bool operator==(const SettingsChanged&, const SettingsChanged&) = default;
};
/// The deadline has passed.
struct Tick {
    friend bool operator==(const Tick&, const Tick&) = default;
};

}  // namespace event

struct Event
    : std::variant<event::Lock, event::Activity, event::CameraFailed, event::Frame, event::Typed,
                   event::SpaceKey, event::Activate, event::SettingsChanged, event::Tick> {
    using Lock = event::Lock;
    using Activity = event::Activity;
    using CameraFailed = event::CameraFailed;
    using Frame = event::Frame;
    using Typed = event::Typed;
    using SpaceKey = event::SpaceKey;
    using Activate = event::Activate;
    using SettingsChanged = event::SettingsChanged;
    using Tick = event::Tick;
    using variant::variant;
};

namespace effect {

struct Overlay {
    OverlayPhase phase;
    friend bool operator==(const Overlay&, const Overlay&) = default;
};
struct StartCamera {
    ScanID id{};
    friend bool operator==(const StartCamera&, const StartCamera&) = default;
};
struct ListenForSpace {
    bool on = false;
    friend bool operator==(const ListenForSpace&, const ListenForSpace&) = default;
};
struct WatchActivity {
    bool on = false;
    friend bool operator==(const WatchActivity&, const WatchActivity&) = default;
};
/// To be stored.
struct PasswordHealth {
    marrowby::PasswordHealth health;
    friend bool operator==(const PasswordHealth&, const PasswordHealth&) = default;
};
struct Log {
    LogLine line;
    friend bool operator==(const Log&, const Log&) = default;
};
struct StopCamera {
    friend bool operator==(const StopCamera&, const StopCamera&) = default;
};
struct TypePassword {
    friend bool operator==(const TypePassword&, const TypePassword&) = default;
};
struct AskToUpdatePassword {
    friend bool operator==(const AskToUpdatePassword&, const AskToUpdatePassword&) = default;
};

}  // namespace effect

struct Effect
    : std::variant<effect::Overlay, effect::StartCamera, effect::ListenForSpace,
                   effect::WatchActivity, effect::PasswordHealth, effect::Log, effect::StopCamera,
                   effect::TypePassword, effect::AskToUpdatePassword> {
    using Overlay = effect::Overlay;
    using StartCamera = effect::StartCamera;
    using ListenForSpace = effect::ListenForSpace;
    using WatchActivity = effect::WatchActivity;
    using PasswordHealth = effect::PasswordHealth;
    using Log = effect::Log;
    using StopCamera = effect::StopCamera;
    using TypePassword = effect::TypePassword;
    using AskToUpdatePassword = effect::AskToUpdatePassword;
    using variant::variant;
};

}  // namespace unlockmachine

/// Decides everything from the lock of the screen to its unlock: when to scan, when to type, what
/// to show. Pure: each event, with a snapshot, gives the effects to carry out, in order. A value
/// for one thread.
class UnlockMachine {
  public:
    using LookReason = unlockmachine::LookReason;
    using Scan = unlockmachine::Scan;
    using Phase = unlockmachine::Phase;
    using Event = unlockmachine::Event;
    using Effect = unlockmachine::Effect;

    /// How long a face that matches nobody may stay before the scan fails.
    static constexpr TimeInterval wrongFaceGrace{2.0};
    /// How long a failure stays shown.
    static constexpr TimeInterval failureHold{5.0};
    /// How long after typing the screen may take to unlock.
    static constexpr TimeInterval passwordCheckDelay{4.0};
    /// The same after asking the desktop.
    static constexpr TimeInterval askedCheckDelay{3.0};
    /// After so many scans without a face in a row, all started by activity, activity starts none.
    static constexpr std::int64_t maxEmptyActivityLooks = 3;
    static constexpr TimeInterval minScanDuration{1.0};

    UnlockMachine(PasswordHealth health, UnlockTriggers triggers);

    [[nodiscard]] std::vector<Effect> handle(Event event, const UnlockSnapshot& snapshot);
    /// Whether handle() would return any effect.
    [[nodiscard]] bool hasEffects(const Event& event, const UnlockSnapshot& snapshot) const;

    [[nodiscard]] const Phase& phase() const { return phase_; }
    [[nodiscard]] const PasswordHealth& health() const { return health_; }
    [[nodiscard]] const OverlayPhase& overlay() const { return overlay_; }

    /// When a tick is due; none while only other events matter.
    [[nodiscard]] std::optional<Date> nextDeadline() const;

    /// The password was saved anew, or its health was changed elsewhere.
    void replaceHealth(PasswordHealth health) { health_ = health; }

  private:
    struct Turn;

    void on(const Event::Lock& event, Turn& turn);
    void on(const Event::Activity& event, Turn& turn);
    void on(Event::CameraFailed& event, Turn& turn);
    void on(Event::Frame& event, Turn& turn);
    void on(Event::Typed& event, Turn& turn);
    void on(const Event::SpaceKey& event, Turn& turn);
    void on(const Event::Activate& event, Turn& turn);
    void on(const Event::SettingsChanged& event, Turn& turn);
    void on(const Event::Tick& event, Turn& turn);

    void onFoundUnlocked(Turn& turn);
    void onWake(Turn& turn);
    [[nodiscard]] bool goesOn(Scan& scan, ScanObservation::Face& face, Turn& turn);

    void syncListeners(Turn& turn);
    void setOverlay(OverlayPhase phase, Turn& turn);
    void startScan(LookReason reason, Turn& turn);
    void fail(UnlockFailure failure, Turn& turn);
    void standDown(LogLine line, Turn& turn);
    void standDownUnable(Turn& turn);
    void returnToIdle(Turn& turn);
    void rearm(Turn& turn);
    void giveUp(Turn& turn);
    void conclude(Turn& turn);
    void turnDownPassword(Turn& turn);
    void failToOpen(Phrase reason, std::string detail, Turn& turn);
    void logActivityIgnored(LogLine line, Turn& turn);

    [[nodiscard]] Scan* currentScan();
    [[nodiscard]] bool isHidden() const;
    [[nodiscard]] bool isAtRest() const;
    [[nodiscard]] bool isWaiting() const;
    [[nodiscard]] bool isPasswordTrusted(const UnlockSnapshot& snapshot) const;
    [[nodiscard]] bool isReady(const UnlockSnapshot& snapshot) const;
    [[nodiscard]] bool isAble(const UnlockSnapshot& snapshot) const;

    Phase phase_ = Phase::Idle{};
    UnlockTriggerPolicy policy_;
    PasswordHealth health_;
    /// As shown last; `Leaving` is kept as `Hidden`.
    OverlayPhase overlay_ = OverlayPhase::Hidden{};
    bool listeningForSpace_ = false;
    bool watchingActivity_ = false;
    std::int64_t emptyActivityLooks_ = 0;
    /// The desktop did not open this lock: it is not asked again.
    bool hasAskedInVain_ = false;
    /// The id of the last scan.
    std::int64_t scanCount_ = 0;
    /// The fence for which an ignored activity was logged.
    std::optional<Date> loggedRefusalFor_;
};

}  // namespace marrowby
