// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Rehearsal/Stage.h"

#include "Platforms/Linux/Desktop/LinuxSystemSettings.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Secrets/SecretServiceKeyStore.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "Simulation/Desktop/AccessibleWindows.h"
#include "Simulation/Desktop/DesktopUser.h"
#include "Simulation/Desktop/Interruption.h"
#include "Simulation/Desktop/PrivateSession.h"
#include "Simulation/Desktop/ProgramOnStage.h"
#include "Simulation/Desktop/ScreenLocker.h"
#include "Simulation/People/Person.h"
#include "Simulation/Scenes/SceneCatalogue.h"
#include "UnlockCore/Engine/LogLine.h"

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <utility>

#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {

namespace {

constexpr TimeInterval aStep{5};
/// For the program's start, also on a machine under load.
constexpr TimeInterval aStart{30};

/// Polling interval of a wait.
constexpr int heartbeatMilliseconds = 20;
constexpr TimeInterval askingInterval{0.1};
constexpr TimeInterval closingInterval{0.5};
constexpr TimeInterval stillTime{1.0};

/// Middle of the pill, below the upper edge of the screen.
constexpr double islandMiddle = 20;

std::string seconds(TimeInterval interval) {
    std::ostringstream text;
    text << std::setprecision(3) << interval.count() << " s";
    return text.str();
}

}  // namespace

/// In construction order.
struct Stage::Parts {
    Parts(PrivateSession privateSession, DesktopUser somebody,
          std::unique_ptr<XcbConnection> display, std::filesystem::path modelFolder,
          std::filesystem::path programFile, int cameraRate, std::string languageOfTexts)
        : session(std::move(privateSession)),
          atDesk(std::move(somebody)),
          connection(std::move(display)),
          models(std::move(modelFolder)),
          programPath(std::move(programFile)),
          picturesPerSecond(cameraRate),
          language(std::move(languageOfTexts)) {}

    PrivateSession session;
    DesktopUser atDesk;
    std::unique_ptr<XcbConnection> connection;
    const std::filesystem::path models;
    const std::filesystem::path programPath;
    const int picturesPerSecond;
    const std::string language;
    Interruption interruption;
    ContactSheet sheet;
    UnixSystemClock clock;
    Transcript transcript{clock};
    ScreenLocker locker{session.displayName()};
    AccessibleWindows windows{session.busAddress()};
    std::unique_ptr<ProgramJournal> journal;
    std::unique_ptr<ProgramOnStage> program;

    std::string loginPassword;
    /// The answer to the last command.
    std::string answer;
    bool isLaunched = false;
    std::vector<ProgramJournal::Entry> log;
    std::size_t logRead = 0;
    std::optional<Date> wokenAt;
    std::optional<Date> firstPictureAt;
    std::optional<Date> typedAt;

    void note(const ProgramJournal::Entry& entry);
    void hear(const std::string& line);
    [[nodiscard]] std::vector<std::string> environment() const;
    [[nodiscard]] std::filesystem::path journalSocket() const { return session.home() / "journal"; }
};

void Stage::Parts::note(const ProgramJournal::Entry& entry) {
    if (entry.event == logevent::road) typedAt = clock.now();
    transcript.engine(entry.message);
    log.push_back(entry);
}

void Stage::Parts::hear(const std::string& line) {
    if (line == "launched") isLaunched = true;
    if (line == "first picture" && !firstPictureAt) firstPictureAt = clock.now();
    if (line.starts_with("done: ") || line.starts_with("unknown: ")) answer = line;
}

std::vector<std::string> Stage::Parts::environment() const {
    std::vector<std::string> environment = session.environment();
    environment.push_back("MARROWBY_MODELS=" + models.string());
    environment.push_back("MARROWBY_CAMERA_RATE=" + std::to_string(picturesPerSecond));
    // Of a name that stands twice the first counts.
    environment.insert(environment.begin(), "LANGUAGE=" + language);
    environment.push_back("MARROWBY_JOURNAL=" + journalSocket().string());
    return environment;
}

Stage::Stage(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

Stage::~Stage() = default;

Stage::Result<std::unique_ptr<Stage>> Stage::create(const Places& places) {
    auto session = PrivateSession::create(places.home, places.screen);
    if (!session) return std::unexpected(session.error());
    auto somebody = DesktopUser::create(session->displayName());
    if (!somebody) return std::unexpected(somebody.error());
    auto connection = XcbConnection::create(session->displayName());
    if (!connection) return std::unexpected(connection.error());
    if (places.home.empty()) {
        // Long enough for a slow machine.
        std::filesystem::create_directory(session->home() / "marrowby-unlock");
        std::ofstream(session->home() / "marrowby-unlock/settings.json")
            << R"({"unlock.scanSeconds": 10})";
    }

    auto parts =
        std::make_unique<Parts>(*std::move(session), *std::move(somebody), *std::move(connection),
                                std::filesystem::absolute(places.models), places.program,
                                places.picturesPerSecond, places.language);
    auto journal = ProgramJournal::create(
        parts->journalSocket(),
        [parts = parts.get()](const ProgramJournal::Entry& entry) { parts->note(entry); });
    if (!journal) return std::unexpected(journal.error());
    parts->journal = *std::move(journal);
    std::unique_ptr<Stage> stage(new Stage(std::move(parts)));
    if (auto started = stage->restartApplication(); !started)
        return std::unexpected(started.error());
    return stage;
}

Transcript& Stage::transcript() {
    return parts_->transcript;
}

Stage::Result<void> Stage::restartApplication() {
    if (parts_->program) parts_->transcript.scene("the program ends and is started again");
    parts_->program.reset();
    parts_->isLaunched = false;
    auto program = ProgramOnStage::start(
        parts_->programPath, {LinuxSystemSettings::atLoginFlag}, parts_->environment(),
        [parts = parts_.get()](const std::string& line) { parts->hear(line); });
    if (!program) return std::unexpected(program.error());
    parts_->program = *std::move(program);
    if (auto launched =
            waitUntil("the program to start", aStart, [this] { return parts_->isLaunched; });
        !launched) {
        return launched;
    }
    if (parts_->loginPassword.empty()) return {};
    return setLoginPassword(parts_->loginPassword);
}

Stage::Result<void> Stage::openApplication() {
    parts_->transcript.scene("the program is started once more, to open its window");
    const auto second = ChildProcess::start({.arguments = {parts_->programPath.string()},
                                             .environment = parts_->environment(),
                                             .endSignal = SIGTERM});
    if (!second) return std::unexpected(second.error());
    return waitUntil("a window", aStart,
                     [&] { return !second->isRunning() && page().has_value(); });
}

Stage::Result<void> Stage::closeWindow() {
    // Repeated while the window lacks the keyboard: the window manager then closes none.
    std::optional<Date> askedAt;
    return waitUntil("the window to close", aStep, [&] {
        if (!page()) return true;
        const Date now = parts_->clock.now();
        if (askedAt && now - *askedAt < closingInterval) return false;
        askedAt = now;
        const DesktopUser& user = parts_->atDesk;
        (void)(user.press(XKB_KEY_Alt_L, true) && user.tap(XKB_KEY_F4));
        (void)user.press(XKB_KEY_Alt_L, false);
        return false;
    });
}

std::optional<std::string> Stage::page() const {
    return parts_->windows.title();
}

Stage::Result<void> Stage::waitForPage(std::string_view title, TimeInterval limit) {
    std::optional<Date> askedAt;
    return waitUntil("the page “" + std::string(title) + "”", limit, [&] {
        const Date now = parts_->clock.now();
        if (askedAt && now - *askedAt < askingInterval) return false;
        askedAt = now;
        return page() == title;
    });
}

Stage::Result<void> Stage::waitForNoWindow() {
    return waitUntil("the window to close", aStep, [&] { return !page(); });
}

Stage::Result<void> Stage::press(std::string_view name) {
    // A new page may still be building its controls.
    return waitUntil("a control “" + std::string(name) + "”", aStep,
                     [&] { return parts_->windows.press(name); });
}

Stage::Result<void> Stage::write(std::string_view text) {
    if (auto focused = waitUntil("the keyboard in a control", aStep,
                                 [&] { return parts_->windows.focusText(); });
        !focused) {
        return focused;
    }
    if (parts_->atDesk.write(text)) return {};
    return std::unexpected("The private desktop takes no keys.");
}

Stage::Result<void> Stage::choose(std::string_view name, int step) {
    if (auto opened = waitUntil("the choice “" + std::string(name) + "”", aStep,
                                [&] { return parts_->windows.open(name); });
        !opened) {
        return opened;
    }
    for (int i = 0; i < std::abs(step); ++i) {
        if (auto moved = tap(step < 0 ? XKB_KEY_Up : XKB_KEY_Down); !moved) return moved;
    }
    return tap(XKB_KEY_Return);
}

bool Stage::shows(std::string_view text) const {
    return std::ranges::any_of(parts_->windows.texts(), [text](const std::string& shown) {
        return shown.find(text) != std::string::npos;
    });
}

bool Stage::isSaved(std::string_view name) const {
    std::error_code error;
    return std::filesystem::exists(parts_->session.home() / "Marrowby Unlock" / name, error);
}

Stage::Result<void> Stage::keepHome(const std::filesystem::path& folder) const {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    for (const char* saved : {"Marrowby Unlock", "marrowby-unlock", "keyrings"}) {
        if (error) break;
        std::filesystem::copy(parts_->session.home() / saved, folder / saved,
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing,
                              error);
    }
    if (error) return std::unexpected("“" + folder.string() + "” can’t be written.");
    return {};
}

bool Stage::hasKey() const {
    return SecretServiceKeyStore(parts_->session.busAddress()).hasKey();
}

Stage::Result<void> Stage::order(const std::string& line) {
    parts_->answer.clear();
    if (!parts_->program->order(line)) return std::unexpected("The program takes no orders.");
    if (auto answered = waitUntil("an answer to “" + line + "”", aStep,
                                  [this] { return !parts_->answer.empty(); });
        !answered) {
        return answered;
    }
    if (parts_->answer.starts_with("done: ")) return {};
    return std::unexpected("The stage knows no “" + line + "”.");
}

Stage::Result<void> Stage::putInFront(std::string_view scene, std::size_t person) {
    const auto found = sceneNamed(scene, distinctPeople()[person]);
    if (!found) return std::unexpected("There is no scene “" + std::string(scene) + "”.");
    parts_->transcript.scene("in front of the camera: " + found->tells);
    return order("scene " + std::string(scene) + " " + std::to_string(person));
}

Stage::Result<void> Stage::playReel(std::string_view scene, std::size_t person) {
    return order("reel " + std::string(scene) + " " + std::to_string(person));
}

Stage::Result<void> Stage::seatUser(std::size_t person) {
    parts_->transcript.scene("in front of the camera: somebody who does what is asked for");
    return order("seat " + std::to_string(person));
}

Stage::Result<void> Stage::turnUsersHead() {
    parts_->transcript.scene("the head turns");
    return order("turn");
}

Stage::Result<void> Stage::setLoginPassword(std::string_view password) {
    parts_->loginPassword = password;
    return order("password " + parts_->loginPassword);
}

const std::string& Stage::loginPassword() const {
    return parts_->loginPassword;
}

Stage::Result<void> Stage::lockScreen() {
    parts_->transcript.scene("somebody locks the screen (i3lock)");
    return parts_->locker.lock(parts_->loginPassword);
}

Stage::Result<void> Stage::waitForUnlock(TimeInterval limit) {
    return waitUntil("the screen to be unlocked", limit,
                     [this] { return !parts_->locker.isRunning(); });
}

Stage::Result<void> Stage::waitForRefusals(std::size_t count, TimeInterval limit) {
    return waitUntil("the locker to turn down a password", limit,
                     [this, count] { return parts_->locker.refusals() >= count; });
}

void Stage::sleepDisplays() {
    parts_->transcript.scene("the displays go to sleep");
    xcb_force_screen_saver(parts_->connection->get(), XCB_SCREEN_SAVER_ACTIVE);
    parts_->connection->flush();
}

Stage::Result<void> Stage::wakeDisplays() {
    parts_->transcript.scene("a key wakes the displays");
    parts_->firstPictureAt.reset();
    parts_->typedAt.reset();
    parts_->wokenAt = parts_->clock.now();
    return tap(XKB_KEY_Shift_L);
}

Stage::Result<void> Stage::tap(std::uint32_t keysym) {
    if (parts_->atDesk.tap(keysym)) return {};
    return std::unexpected("The private desktop takes no keys.");
}

Stage::Result<void> Stage::touchKeyboard() {
    parts_->transcript.scene("somebody touches the keyboard");
    return tap(XKB_KEY_Shift_L);
}

Stage::Result<void> Stage::pressSpace() {
    parts_->transcript.scene("somebody presses Space");
    return tap(XKB_KEY_space);
}

Stage::Result<void> Stage::pointAtIsland() {
    parts_->transcript.scene("the pointer comes to the island");
    const xcb_screen_t& screen = parts_->connection->screen();
    const double middle = screen.width_in_pixels / 2.0;
    parts_->atDesk.pointAt({.x = middle, .y = screen.height_in_pixels / 2.0});
    // Until the application has seen it there.
    if (auto seen = letPass(TimeInterval(0.75)); !seen) return seen;
    parts_->atDesk.pointAt({.x = middle, .y = islandMiddle});
    return {};
}

Stage::Result<void> Stage::moveClock(TimeInterval by) {
    constexpr double aDay = 86400;
    std::ostringstream text;
    text << "the clock is set forward by ";
    if (by.count() < aDay) {
        text << by.count() << " s";
    } else {
        text << by.count() / aDay << " days";
    }
    parts_->transcript.scene(text.str());
    return order("clock " + std::to_string(static_cast<long>(by.count())));
}

Stage::Result<void> Stage::typeByHand(std::string_view text) {
    parts_->transcript.scene("somebody types at the lock screen");
    const DesktopUser& user = parts_->atDesk;
    if (user.tap(XKB_KEY_Escape) && user.write(text) && user.tap(XKB_KEY_Return)) return {};
    return std::unexpected("The private desktop takes no keys.");
}

void Stage::killLocker() {
    parts_->locker.kill();
}

bool Stage::isLockerRunning() const {
    return parts_->locker.isRunning();
}

Stage::Result<void> Stage::waitUntil(std::string_view what, TimeInterval limit,
                                     const std::function<bool()>& holds) {
    const Date begin = parts_->clock.now();
    QTimer heartbeat;
    heartbeat.start(heartbeatMilliseconds);
    while (!holds()) {
        if (parts_->interruption.hasCome())
            return std::unexpected("The rehearsal was interrupted.");
        if (const auto failure = parts_->session.failure()) return std::unexpected(*failure);
        if (parts_->program && !parts_->program->isRunning())
            return std::unexpected("The program has ended.");
        if (parts_->clock.now() - begin > limit) {
            return std::unexpected("Waited " + seconds(limit) + " in vain for " +
                                   std::string(what) + ".");
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return {};
}

Stage::Result<void> Stage::letPass(TimeInterval time) {
    const Date end = parts_->clock.now() + time;
    return waitUntil("time to pass", time * 2 + TimeInterval(1),
                     [this, end] { return parts_->clock.now() >= end; });
}

Stage::Result<void> Stage::waitForEvent(std::string_view event, TimeInterval limit,
                                        std::string_view subject) {
    const std::string about = subject.empty() ? "" : " (" + std::string(subject) + ")";
    return waitUntil("the event “" + std::string(event) + "”" + about, limit, [&] {
        while (parts_->logRead < parts_->log.size()) {
            const ProgramJournal::Entry& entry = parts_->log[parts_->logRead++];
            if (entry.event == event && (subject.empty() || entry.subject == subject)) return true;
        }
        return false;
    });
}

Stage::Result<QImage> Stage::windowPicture() {
    QImage picture;
    Date since = parts_->clock.now();
    const auto still = waitUntil("the window to be drawn", aStart, [&] {
        const Date now = parts_->clock.now();
        if (QImage next = parts_->atDesk.activeWindow(); next.isNull() || next != picture) {
            picture = std::move(next);
            since = now;
        }
        return now - since > stillTime;
    });
    if (!still) return std::unexpected(still.error());
    return picture;
}

void Stage::photograph(std::string caption) {
    // First: the locker ends a tenth of a second after the recognition.
    QImage screen = parts_->atDesk.screen();
    const auto file = parts_->session.home() / "picture.png";
    QImage camera;
    if (order("picture " + file.string())) camera.load(QString::fromStdString(file.string()));
    parts_->sheet.add(
        {.caption = std::move(caption), .camera = std::move(camera), .screen = std::move(screen)});
}

const ContactSheet& Stage::contactSheet() const {
    return parts_->sheet;
}

const std::vector<ProgramJournal::Entry>& Stage::log() const {
    return parts_->log;
}

std::vector<ProgramJournal::Entry> Stage::takeLog() {
    parts_->logRead = 0;
    return std::exchange(parts_->log, {});
}

std::optional<Stage::UnlockTimes> Stage::unlockTimes() const {
    const auto woken = parts_->wokenAt;
    const auto seen = parts_->firstPictureAt;
    const auto typed = parts_->typedAt;
    if (!woken || !seen || !typed) return std::nullopt;
    return UnlockTimes{.fromWake = *typed - *woken, .fromFirstPicture = *typed - *seen};
}

}  // namespace marrowby
