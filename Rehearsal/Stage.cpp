#include "Rehearsal/Stage.h"

#include "Platforms/Linux/Desktop/JsonDefaultsStore.h"
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/ThreadWorkQueues.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Session/DesktopSession.h"
#include "Platforms/Linux/Vision/OpenCvFaceVision.h"
#include "Platforms/Linux/Vision/OpenCvFourierTransform.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "Platforms/Linux/X11/X11WindowServer.h"
#include "Platforms/Linux/X11/XTestKeyEvents.h"
#include "Platforms/Posix/OpenSslCipher.h"
#include "Platforms/Posix/PosixFileSystem.h"
#include "Rehearsal/DesktopUser.h"
#include "Rehearsal/Interruption.h"
#include "Rehearsal/MovedClock.h"
#include "Rehearsal/MovedMainThread.h"
#include "Rehearsal/PrivateDesktop.h"
#include "Rehearsal/PrivateFolder.h"
#include "Rehearsal/SceneAccount.h"
#include "Rehearsal/SceneKeyStore.h"
#include "Rehearsal/SceneOwner.h"
#include "Rehearsal/SceneSettings.h"
#include "Rehearsal/Scenes/SceneFilm.h"
#include "Rehearsal/Scenes/SceneUser.h"
#include "Rehearsal/Scenes/ScriptedCamera.h"
#include "Rehearsal/ScreenLocker.h"
#include "Unlock/Island/Island.h"
#include "Unlock/Linux/LinuxWords.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"
#include "UnlockCore/Platform/LockEventWatching.h"

#include <QCoreApplication>
#include <QTimer>
#include <iomanip>
#include <sstream>
#include <utility>

#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {

namespace {

constexpr TimeInterval lockAnnouncement{5};

/// How often a wait looks again when nothing happens.
constexpr int heartbeatMilliseconds = 20;

/// Of the pill, below its panel's upper edge.
constexpr double islandMiddle = 20;

std::string seconds(TimeInterval interval) {
    std::ostringstream text;
    text << std::setprecision(3) << interval.count() << " s";
    return text.str();
}

/// What the cameras show: their newest picture, and when the first came since it was asked to.
class Viewfinder {
  public:
    void await() {
        const MutexLock lock(mutex_);
        seen_.reset();
    }
    void note(Date now) {
        const MutexLock lock(mutex_);
        if (!seen_) seen_ = now;
    }
    [[nodiscard]] std::optional<Date> seen() const {
        const MutexLock lock(mutex_);
        return seen_;
    }
    void show(std::shared_ptr<const PixelBuffer> picture) {
        const MutexLock lock(mutex_);
        picture_ = std::move(picture);
    }
    [[nodiscard]] QImage picture() const {
        const MutexLock lock(mutex_);
        if (!picture_) return {};
        return QImage(picture_->bytes().data(), picture_->width(), picture_->height(),
                      static_cast<qsizetype>(picture_->bytesPerRow()), QImage::Format_RGB32)
            .copy();
    }

  private:
    mutable Mutex mutex_;
    std::optional<Date> seen_ GUARDED_BY(mutex_);
    std::shared_ptr<const PixelBuffer> picture_ GUARDED_BY(mutex_);
};

/// The session's lock events, whoever else hears them, and a sleep of the displays that the stage
/// makes up. Main thread.
class StagedLockEvents final : public LockEventWatching {
  public:
    StagedLockEvents(LockEventWatching& session, MainThread& mainThread)
        : session_(session), mainThread_(mainThread) {
        session_.onEvent = [this](LockEvent event) {
            if (onSessionEvent) onSessionEvent(event);
            tell(event);
        };
        session_.start();
    }
    StagedLockEvents(const StagedLockEvents&) = delete;
    StagedLockEvents& operator=(const StagedLockEvents&) = delete;
    ~StagedLockEvents() override {
        session_.stop();
        session_.onEvent = {};
    }

    std::function<void(LockEvent)> onSessionEvent;

    void setAsleep(bool isAsleep) {
        mainThread_.post([this, isAsleep, weak = std::weak_ptr(life_)] {
            if (!weak.lock()) return;
            isAsleep_ = isAsleep;
            tell(isAsleep ? LockEvent::willSleep : LockEvent::wake);
        });
    }

    [[nodiscard]] bool isSleeping() const override { return isAsleep_ || session_.isSleeping(); }
    void start() override { isHeard_ = true; }
    void stop() override { isHeard_ = false; }

  private:
    void tell(LockEvent event) const {
        if (const auto report = onEvent; isHeard_ && report) report(event);
    }

    LockEventWatching& session_;
    MainThread& mainThread_;
    bool isAsleep_ = false;
    bool isHeard_ = false;
    std::shared_ptr<const bool> life_ = std::make_shared<const bool>();
};

}  // namespace

/// What the application runs on, in the order in which it may be built; it goes in reverse.
struct Stage::World {
    World(ModelPack pack, PrivateFolder home, PrivateDesktop screen, DesktopUser somebody)
        : networks(std::move(pack)),
          data(std::move(home)),
          desktop(std::move(screen)),
          atDesk(std::move(somebody)) {}

    const ModelPack networks;
    PrivateFolder data;
    PrivateDesktop desktop;
    DesktopUser atDesk;
    Interruption interruption;
    ContactSheet sheet;

    UnixSystemClock realClock;
    MovedClock clock{realClock};
    Transcript transcript{realClock};
    QtMainThread realMainThread;
    MovedMainThread mainThread{realMainThread, clock};
    OpenCvImaging imaging;
    OpenCvFourierTransform fourier;
    OpenCvNeuralModels models;
    std::unique_ptr<FaceVision> lookVision;
    std::unique_ptr<FaceVision> enrollmentVision;
    OpenSslCipher cipher;
    PosixFileSystem files;
    JsonDefaultsStore defaults{files, data.path() / "settings.json"};
    SceneKeyStore keyStore;
    SceneOwner owner{mainThread};
    SceneAccount account;
    SceneSettings systemSettings;
    std::string loginPassword;

    // What the real session's buses say is nothing to the private desktop.
    DesktopSession session{{.systemBus = {}, .sessionBus = {}, .display = desktop.displayName()},
                           mainThread};
    StagedLockEvents lockEvents{session.lockEvents(), mainThread};
    XTestKeyEvents keyEvents{desktop.displayName()};
    ScreenLocker locker{desktop.displayName()};
    X11WindowServer windowServer{desktop.displayName()};

    Cast cast;
    /// Who follows the enrolment; the cameras' views hold him too.
    std::shared_ptr<SceneUser> user;
    Date sceneBegan;
    Viewfinder viewfinder;
    /// Goes before all that its last work uses.
    ThreadWorkQueues queues;
    std::shared_ptr<ScriptedCamera> lookCamera;
    std::shared_ptr<ScriptedCamera> enrollmentCamera;
    SceneWindows windows;
    std::unique_ptr<UnlockApplication> application;

    std::vector<std::string> log;
    std::size_t logRead = 0;
    std::optional<std::string> fault;
    bool isLockAnnounced = false;
    std::optional<Date> wokenAt;
    std::optional<Date> typedAt;

    [[nodiscard]] Result<void> setUp();
    void startApplication();
    void film(const Scene& scene);
    void note(const std::string& line);
    [[nodiscard]] Result<void> tap(std::uint32_t keysym);
};

Stage::Result<void> Stage::World::setUp() {
    for (auto* vision : {&lookVision, &enrollmentVision}) {
        auto finder =
            OpenCvFaceVision::load(networks.folder / networks.finderFile,
                                   networks.folder / networks.landmarksFile, queues.background());
        if (!finder) return std::unexpected(finder.error());
        *vision = std::move(*finder);
    }
    session.onDisplayAway = [this](const std::string& text) { fault = text; };
    lockEvents.onSessionEvent = [this](LockEvent event) {
        if (event != LockEvent::screenLocked && event != LockEvent::screenUnlocked) return;
        isLockAnnounced = event == LockEvent::screenLocked;
        transcript.scene(isLockAnnounced ? "the screen is locked" : "the screen is unlocked");
    };

    const std::vector devices{ScriptedCamera::builtInCamera()};
    lookCamera = std::make_shared<ScriptedCamera>(
        devices, clock, [this](std::function<TimeInterval()> step) {
            return startThreadPacing([this, step = std::move(step)] {
                const std::uint64_t before = lookCamera->counts().sent;
                const TimeInterval pause = step();
                if (lookCamera->counts().sent > before) viewfinder.note(realClock.now());
                return pause;
            });
        });
    enrollmentCamera = std::make_shared<ScriptedCamera>(devices, clock);

    windows.onGuide = [this, said = std::string()](const std::string& hint) mutable {
        if (hint != said) transcript.scene("enrolment: “" + hint + "”");
        said = hint;
        if (user) user->heed(hintSaying(hint), clock.now() - sceneBegan);
    };
    startApplication();
    session.start();
    if (fault) return std::unexpected(*fault);
    return {};
}

void Stage::World::startApplication() {
    application.reset();
    application = std::make_unique<UnlockApplication>(
        UnlockPlatform{.words = linuxWords,
                       .mainThread = mainThread,
                       .clock = clock,
                       .queues = queues,
                       .lockEvents = lockEvents,
                       .lockState = session.lockState(),
                       .inputIdle = session.inputIdle(),
                       .spaceKeys = session.spaceKeys(),
                       .lookCamera = lookCamera,
                       .enrollmentCamera = enrollmentCamera,
                       .lookVision = *lookVision,
                       .enrollmentVision = *enrollmentVision,
                       .models = models,
                       .imaging = imaging,
                       .fourier = fourier,
                       .cipher = cipher,
                       .files = files,
                       .keyStore = keyStore,
                       .ownerCheck = owner,
                       .passwordVerifier = account,
                       .defaults = defaults,
                       .keyEvents = keyEvents,
                       .systemSettings = systemSettings,
                       .windowServer = windowServer},
        UnlockModel::Resources{.dataBase = data.path(), .testTag = {}, .models = networks}, windows,
        UnlockApplication::Hooks{.log = [this](const std::string& line) { note(line); },
                                 .terminate = [] {}});
    application->didFinishLaunching({.isAtLogin = true, .isVisible = true});
}

// A film for each camera, as they may run at the same time.
void Stage::World::film(const Scene& scene) {
    sceneBegan = clock.now();
    for (const auto& camera : {lookCamera, enrollmentCamera}) {
        camera->setView([this, film = std::make_shared<SceneFilm>(scene, cast),
                         began = sceneBegan](const ScriptedCamera::Shot& shot) {
            auto picture = film->shoot({.at = shot.at - began,
                                        .running = shot.running,
                                        .frameTime = shot.frameTime,
                                        .width = shot.width,
                                        .height = shot.height})
                               .picture;
            viewfinder.show(picture);
            return picture;
        });
    }
    transcript.scene("in front of the camera: " + scene.tells);
}

void Stage::World::note(const std::string& line) {
    if (line == "Typed the password and Return") typedAt = realClock.now();
    transcript.engine(line);
    log.push_back(line);
}

Stage::Result<void> Stage::World::tap(std::uint32_t keysym) {
    if (atDesk.tap(keysym)) return {};
    return std::unexpected("The private desktop takes no keys.");
}

Stage::Stage(std::unique_ptr<World> world) : world_(std::move(world)) {}

Stage::~Stage() = default;

Stage::Result<std::unique_ptr<Stage>> Stage::create(const ModelPack& networks) {
    auto data = PrivateFolder::create();
    if (!data) return std::unexpected(data.error());
    auto desktop = PrivateDesktop::create();
    if (!desktop) return std::unexpected(desktop.error());
    auto somebody = DesktopUser::create(desktop->displayName());
    if (!somebody) return std::unexpected(somebody.error());
    auto world = std::make_unique<World>(networks, std::move(*data), std::move(*desktop),
                                         std::move(*somebody));
    if (auto ready = world->setUp(); !ready) return std::unexpected(ready.error());
    return std::unique_ptr<Stage>(new Stage(std::move(world)));
}

Transcript& Stage::transcript() {
    return world_->transcript;
}

UnlockModel& Stage::model() {
    return world_->application->model();
}

SceneWindows& Stage::windows() {
    return world_->windows;
}

Stage::Result<void> Stage::openApplication() {
    world_->transcript.scene("the application is opened");
    world_->application->shouldHandleReopen();
    return waitUntil("a window", TimeInterval(5), [this] {
        return world_->windows.isOpen(UnlockOpening::Window::welcome) ||
               world_->windows.isOpen(UnlockOpening::Window::settings);
    });
}

void Stage::restartApplication() {
    world_->transcript.scene("the application ends and is started again");
    world_->startApplication();
}

void Stage::putInFront(const Scene& scene) {
    world_->user.reset();
    world_->film(scene);
}

void Stage::seatUser(std::uint64_t person) {
    const auto user = std::make_shared<SceneUser>(person);
    world_->film({.tells = "somebody who does what is asked for",
                  .actors = {{person, [user](TimeInterval time) { return user->at(time); }}},
                  .seed = person});
    world_->user = user;
}

void Stage::turnUsersHead() {
    world_->transcript.scene("the head turns");
    world_->user->turnHead(world_->clock.now() - world_->sceneBegan);
}

void Stage::setLoginPassword(std::string_view password) {
    world_->loginPassword = password;
    world_->account.setPassword(world_->loginPassword);
}

Stage::Result<void> Stage::lockScreen() {
    world_->transcript.scene("somebody locks the screen (i3lock)");
    world_->viewfinder.show(nullptr);
    if (auto locked = world_->locker.lock(world_->loginPassword); !locked) return locked;
    return waitUntil("the lock to be announced", lockAnnouncement,
                     [this] { return world_->isLockAnnounced; });
}

Stage::Result<void> Stage::waitForUnlock(TimeInterval limit) {
    return waitUntil("the screen to be unlocked", limit,
                     [this] { return !world_->locker.isRunning() && !world_->isLockAnnounced; });
}

void Stage::sleepDisplays() {
    world_->transcript.scene("the displays go to sleep");
    world_->lockEvents.setAsleep(true);
}

void Stage::wakeDisplays() {
    world_->transcript.scene("the displays wake");
    world_->viewfinder.await();
    world_->typedAt.reset();
    world_->wokenAt = world_->realClock.now();
    world_->lockEvents.setAsleep(false);
}

Stage::Result<void> Stage::touchKeyboard() {
    world_->transcript.scene("somebody touches the keyboard");
    return world_->tap(XKB_KEY_Shift_L);
}

Stage::Result<void> Stage::pressSpace() {
    world_->transcript.scene("somebody presses Space");
    return world_->tap(XKB_KEY_space);
}

Stage::Result<void> Stage::pointAtIsland() {
    world_->transcript.scene("the pointer comes to the island");
    const auto screen = world_->windowServer.mainScreen();
    if (!screen) return std::unexpected("The private desktop has no screen.");
    const Rect island = Island::frame(*screen);
    world_->atDesk.pointAt({.x = island.centre().x, .y = screen->frame.height / 2});
    // Until it was seen elsewhere.
    if (auto seen = letPass(TimeInterval(0.75)); !seen) return seen;
    world_->atDesk.pointAt({.x = island.centre().x, .y = island.y + islandMiddle});
    return {};
}

void Stage::moveClock(TimeInterval by) {
    const double days = by.count() / 86400;
    std::ostringstream text;
    text << "the clock is set forward by " << std::setprecision(3) << days << " days";
    world_->transcript.scene(text.str());
    world_->clock.move(by);
    world_->mainThread.clockMoved();
}

Stage::Result<void> Stage::typeByHand(std::string_view text) {
    world_->transcript.scene("somebody types at the lock screen");
    const auto outcome = std::make_shared<std::optional<Result<void>>>();
    world_->queues.background()->async([world = world_.get(), text = std::string(text), outcome] {
        const KeystrokeTyping typing = keystrokeinjector::typePassword(
            world->keyEvents, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
            [world] { return world->locker.isRunning(); });
        Result<void> result;
        if (!typing.outcome()) {
            result = std::unexpected(description(typing.outcome().error(), linuxWords));
        }
        world->mainThread.post([outcome, result] { *outcome = result; });
    });
    if (auto done = waitUntil("the typing by hand", TimeInterval(10),
                              [&outcome] { return outcome->has_value(); });
        !done) {
        return done;
    }
    return outcome->value_or(Result<void>());
}

void Stage::killLocker() {
    world_->locker.kill();
}

bool Stage::isLockerRunning() const {
    return world_->locker.isRunning();
}

Stage::Result<void> Stage::waitUntil(std::string_view what, TimeInterval limit,
                                     const std::function<bool()>& holds) {
    const Date begin = world_->realClock.now();
    QTimer heartbeat;
    heartbeat.start(heartbeatMilliseconds);
    while (!holds()) {
        if (world_->interruption.hasCome())
            return std::unexpected("The rehearsal was interrupted.");
        if (const auto fault = world_->fault) return std::unexpected(*fault);
        if (world_->realClock.now() - begin > limit) {
            return std::unexpected("Waited " + seconds(limit) + " in vain for " +
                                   std::string(what) + ".");
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return {};
}

Stage::Result<void> Stage::letPass(TimeInterval time) {
    const Date end = world_->realClock.now() + time;
    return waitUntil("time to pass", time * 2 + TimeInterval(1),
                     [this, end] { return world_->realClock.now() >= end; });
}

Stage::Result<void> Stage::letPassSinceWake(TimeInterval time) {
    const std::optional<Date> wokenAt = world_->wokenAt;
    if (!wokenAt) return {};
    return letPass(time - (world_->realClock.now() - *wokenAt));
}

Stage::Result<void> Stage::waitForLog(std::string_view text, TimeInterval limit) {
    return waitUntil("the log line “" + std::string(text) + "”", limit, [this, text] {
        while (world_->logRead < world_->log.size()) {
            if (world_->log[world_->logRead++].starts_with(text)) return true;
        }
        return false;
    });
}

void Stage::photograph(std::string caption) {
    world_->sheet.add({.caption = std::move(caption),
                       .camera = world_->viewfinder.picture(),
                       .screen = world_->atDesk.screen()});
}

const ContactSheet& Stage::contactSheet() const {
    return world_->sheet;
}

std::vector<std::string> Stage::takeLog() {
    world_->logRead = 0;
    return std::exchange(world_->log, {});
}

std::optional<Stage::RoadTimes> Stage::roadTimes() const {
    const auto woken = world_->wokenAt;
    const auto seen = world_->viewfinder.seen();
    const auto typed = world_->typedAt;
    if (!woken || !seen || !typed) return std::nullopt;
    return RoadTimes{.fromWake = *typed - *woken, .fromFirstFrame = *typed - *seen};
}

}  // namespace marrowby
