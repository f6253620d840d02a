// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/ScreenLocker.h"

#include "Platforms/Linux/X11/LockerWindows.h"
#include "Platforms/Linux/X11/XKeyGuard.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "Simulation/Desktop/ChildProcess.h"
#include "UnlockCore/Foundation/Mutex.h"

#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pwd.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace marrowby {

namespace {

constexpr std::chrono::seconds lockLimit{10};
constexpr std::chrono::milliseconds askStep{10};
constexpr TimeInterval endLimit{2.0};

/// Begins the PAM wrapper's errors: another one, starting at the same time, took its folder's name,
/// or one that was killed left a folder half made.
constexpr const char* wrapperError = "PWRAP_ERROR";
constexpr int startTries = 5;

// Called with the folder. When its input ends, at the latest with this process, removes the folder
// and what the PAM wrapper of a killed locker left behind.
constexpr const char* keeperScript = R"sh(
cat >/dev/null
rm -rf -- "$0"
cd /tmp || exit
for copy in pam.?; do
    if [ -d "$copy" ] && [ ! -L "$copy" ] && grep -rqsF "$0/checker" "$copy"; then
        rm -rf -- "$copy"
    fi
done
)sh";

// Slow like a login's checker, so that the typing process learns of the result before the locker
// ends. Versions of pam_exec differ in whether a NUL ends what they write.
constexpr const char* checkerScript = R"sh(#!/bin/sh
sleep 0.2
folder=$(dirname "$0")
tr -d '\000' | cmp -s - "$folder/password" && exit
echo >>"$folder/refusals"
exit 1
)sh";

// Prepended to a script, so that it ends together with its children. Killed after a while: lockers
// sometimes ignore SIGTERM.
constexpr std::string_view endingTogether = R"sh(
end() {
    trap "" TERM
    kill 0
    for i in 1 2 3 4 5 6 7 8 9 10; do
        kill -0 $saver || break
        sleep 0.05
    done
    kill -s KILL 0
}
trap end EXIT
)sh";

// Locks once, and ends when unlocked; xscreensaver itself would stay.
constexpr const char* xscreensaverScript = R"sh(
trap 'exit 1' TERM
xscreensaver --no-splash >&2 & saver=$!
until xscreensaver-command -time >/dev/null 2>&1; do
    kill -0 $saver || exit
    sleep 0.05
done
xscreensaver-command -watch | {
    xscreensaver-command -lock >/dev/null
    sed -n '/^UNBLANK/q'
    kill $$
} &
wait
)sh";

constexpr const char* mateScreensaverScript = R"sh(
trap 'exit 1' TERM
export DBUS_SESSION_BUS_ADDRESS="unix:path=$HOME/bus"
dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS" --print-address=1 \
    >"$HOME/listening" &
until [ -s "$HOME/listening" ]; do sleep 0.02; done
dbus-monitor "type='signal',interface='org.mate.ScreenSaver',member='ActiveChanged'" | {
    sed -n '/boolean false/q'
    kill $$
} &
mate-screensaver --no-daemon >&2 & saver=$!
until mate-screensaver-command --query >/dev/null 2>&1; do
    kill -0 $saver || exit
    sleep 0.05
done
mate-screensaver-command --lock >/dev/null
wait
)sh";

// The process that holds the pipe is the locker, once the started program has ended.
constexpr const char* i3lockScript = R"sh(
trap 'exit 1' TERM
i3lock -c 204060 | cat & saver=$!
wait
)sh";

constexpr const char* xscreensaverSettings =
    "mode: blank\nlock: True\nfade: False\nunfade: False\ndpmsEnabled: False\n";

/// The lockers' PAM service names.
constexpr std::array pamServices{"i3lock",           "xsecurelock", "xscreensaver",
                                 "mate-screensaver", "common-auth", "other"};

/// An ordinary user of every Debian system.
constexpr const char* ordinaryUser = "www-data";

const char* name(ScreenLocker::Kind kind) {
    switch (kind) {
        case ScreenLocker::Kind::i3lock:
        case ScreenLocker::Kind::i3lockInBackground:
            return "i3lock";
        case ScreenLocker::Kind::xsecurelock:
            return "xsecurelock";
        case ScreenLocker::Kind::xscreensaver:
            return "xscreensaver";
        case ScreenLocker::Kind::mateScreensaver:
            return "mate-screensaver";
    }
    return "";
}

/// Whether it runs from a script as an ordinary user.
bool isScripted(ScreenLocker::Kind kind) {
    return kind != ScreenLocker::Kind::i3lock && kind != ScreenLocker::Kind::xsecurelock;
}

const char* script(ScreenLocker::Kind kind) {
    switch (kind) {
        case ScreenLocker::Kind::i3lockInBackground:
            return i3lockScript;
        case ScreenLocker::Kind::xscreensaver:
            return xscreensaverScript;
        case ScreenLocker::Kind::mateScreensaver:
            return mateScreensaverScript;
        case ScreenLocker::Kind::i3lock:
        case ScreenLocker::Kind::xsecurelock:
            break;
    }
    return "";
}

std::vector<std::string> command(ScreenLocker::Kind kind) {
    switch (kind) {
        case ScreenLocker::Kind::i3lock:
            return {"i3lock", "-n", "-c", "204060"};
        case ScreenLocker::Kind::xsecurelock:
            return {"xsecurelock"};
        case ScreenLocker::Kind::i3lockInBackground:
        case ScreenLocker::Kind::xscreensaver:
        case ScreenLocker::Kind::mateScreensaver:
            break;
    }
    // No new privileges: a setuid checker would refuse the wrapper.
    std::vector<std::string> words{"setpriv", "--no-new-privs"};
    if (::geteuid() == 0) {
        const std::string user = ordinaryUser;
        for (const auto& word :
             {"--reuid=" + user, "--regid=" + user, std::string("--init-groups")})
            words.push_back(word);
    }
    words.insert(words.end(), {"sh", "-c", std::string(endingTogether) + script(kind)});
    return words;
}

/// Gives the folder's files to the locker's user.
bool giveAway(const std::filesystem::path& folder, ScreenLocker::Kind kind) {
    if (!isScripted(kind) || ::geteuid() != 0) return true;
    const passwd* user = ::getpwnam(ordinaryUser);
    if (user == nullptr) return false;
    const auto give = [user](const std::filesystem::path& path) {
        return ::chown(path.c_str(), user->pw_uid, user->pw_gid) == 0;
    };
    return give(folder) &&
           std::ranges::all_of(std::filesystem::recursive_directory_iterator(folder),
                               [&](const auto& entry) { return give(entry.path()); });
}

bool writeFile(const std::filesystem::path& path, std::string_view text, mode_t mode) {
    const OwnedFile file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    return file.get() >= 0 &&
           ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A private folder with the checker, and the service files in a folder of their own, which the PAM
/// wrapper copies elsewhere. Removed when this is destroyed and when this process dies.
class CheckerFolder {
  public:
    [[nodiscard]] static std::expected<CheckerFolder, std::string> create(std::string_view password,
                                                                          ScreenLocker::Kind kind) {
        std::error_code error;
        std::string name =
            (std::filesystem::temp_directory_path(error) / "marrowby-locker-XXXXXX").string();
        if (error || ::mkdtemp(name.data()) == nullptr) {
            return std::unexpected("No private folder could be made for the screen locker.");
        }
        auto input = Pipe::create();
        if (!input) return std::unexpected(input.error());
        auto keeper = ChildProcess::start({.arguments = {"sh", "-c", keeperScript, name},
                                           .environment = {},
                                           .standardInput = input->reading.get()});
        if (!keeper) {
            std::filesystem::remove(name, error);
            return std::unexpected(keeper.error());
        }
        CheckerFolder folder(name, std::move(*keeper), std::move(input->writing));
        const std::string rules = "auth required pam_exec.so expose_authtok quiet /bin/sh [" +
                                  name + "/checker]\naccount required pam_permit.so\n";
        if (::mkdir(folder.services().c_str(), 0700) != 0 ||
            !std::ranges::all_of(pamServices,
                                 [&](const char* service) {
                                     return writeFile(folder.services() / service, rules, 0600);
                                 }) ||
            !writeFile(folder.path_ / ".xscreensaver", xscreensaverSettings, 0600) ||
            !writeFile(folder.path_ / "checker", checkerScript, 0700) ||
            !writeFile(folder.path_ / "password", password, 0600) ||
            !writeFile(folder.messages(), "", 0600) || !writeFile(folder.refusals(), "", 0600) ||
            !giveAway(folder.path_, kind)) {
            return std::unexpected("The screen locker's private folder could not be filled.");
        }
        return folder;
    }

    CheckerFolder(CheckerFolder&&) noexcept = default;
    CheckerFolder& operator=(CheckerFolder&&) noexcept = default;
    // Destroyed in reverse order: first the keeper's input ends, then the keeper is awaited.

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::filesystem::path services() const { return path_ / "services"; }
    [[nodiscard]] std::filesystem::path messages() const { return path_ / "messages"; }
    /// A line for each wrong password.
    [[nodiscard]] std::filesystem::path refusals() const { return path_ / "refusals"; }

  private:
    CheckerFolder(std::filesystem::path path, ChildProcess keeper, OwnedFile input)
        : path_(std::move(path)), keeper_(std::move(keeper)), input_(std::move(input)) {}

    std::filesystem::path path_;
    ChildProcess keeper_;
    OwnedFile input_;
};

/// Watches the root window for a locker that comes up: a window that covers the screen.
class RootWatch {
  public:
    explicit RootWatch(const std::string& displayName)
        : connection_(XcbConnection::create(displayName).value_or(nullptr)) {
        if (!connection_) return;
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection_->get(), connection_->root(), XCB_CW_EVENT_MASK,
                                     &events);
        (void)connection_->atom("done");
    }

    [[nodiscard]] bool isAlive() const { return connection_ && !connection_->hasError(); }
    [[nodiscard]] int descriptor() const { return connection_->fd(); }

    /// Handles pending events; true when the locker's window is up and holds the keyboard.
    [[nodiscard]] bool lockerIsUp() {
        while (const XcbConnection::Owned<xcb_generic_event_t> event{
            xcb_poll_for_event(connection_->get())}) {
            if ((event->response_type & 0x7F) != XCB_MAP_NOTIFY) continue;
            const auto& mapped = reinterpret_cast<const xcb_map_notify_event_t&>(*event);
            isMapped_ |= mapped.override_redirect != 0 && coversScreen(mapped.window);
        }
        return isMapped_ && XKeyGuard(*connection_).isKeyboardHeld();
    }
    /// Polled, because no event reports a keyboard grab.
    [[nodiscard]] bool isToBeAskedAgain() const { return isMapped_; }

  private:
    [[nodiscard]] bool coversScreen(xcb_window_t window) const {
        const auto found = connection_->reply<xcb_get_geometry_reply>(
            xcb_get_geometry(connection_->get(), window));
        if (!found) return false;
        const double borders = 2.0 * found->border_width;
        const auto& screen = connection_->screen();
        return covers({.x = double(found->x),
                       .y = double(found->y),
                       .width = found->width + borders,
                       .height = found->height + borders},
                      {.x = 0,
                       .y = 0,
                       .width = double(screen.width_in_pixels),
                       .height = double(screen.height_in_pixels)});
    }

    std::unique_ptr<XcbConnection> connection_;
    bool isMapped_ = false;
};

std::vector<pid_t> processesInSession(pid_t leader) {
    std::vector<pid_t> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename();
        pid_t process = 0;
        std::from_chars(name.data(), name.data() + name.size(), process);
        if (process > 0 && ::getsid(process) == leader) found.push_back(process);
    }
    return found;
}

bool runs(pid_t process, std::string_view program) {
    std::error_code error;
    const auto file = std::filesystem::path("/proc") / std::to_string(process) / "exe";
    return std::filesystem::read_symlink(file, error).filename() == program;
}

/// Ends all processes of the session, also those that left its group, as xscreensaver's do.
void endSession(const ChildProcess& leader) {
    leader.send(SIGTERM);
    leader.waitEnded(endLimit);
    for (const pid_t process : processesInSession(leader.id()))
        ::kill(process, SIGKILL);
}

enum class Start { up, ended, late };

Start waitForLocker(RootWatch& watch, const ChildProcess& locker) {
    const auto deadline = std::chrono::steady_clock::now() + lockLimit;
    while (true) {
        if (!locker.isRunning() || !watch.isAlive()) return Start::ended;
        if (watch.lockerIsUp()) return Start::up;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return Start::late;
        std::array<pollfd, 2> wanted{
            pollfd{.fd = watch.descriptor(), .events = POLLIN, .revents = 0},
            pollfd{.fd = locker.endDescriptor(), .events = POLLIN, .revents = 0}};
        const auto wait = watch.isToBeAskedAgain() ? std::min(left, askStep) : left;
        ::poll(wanted.data(), wanted.size(), static_cast<int>(wait.count()));
    }
}

}  // namespace

struct ScreenLocker::State {
    struct Session {
        CheckerFolder folder;
        ChildProcess locker;
    };

    State(std::string name, Kind locker) : displayName(std::move(name)), kind(locker) {}

    void begin(Session started) {
        const MutexLock lock(mutex);
        session.emplace(std::move(started));
    }

    [[nodiscard]] bool isRunning() const {
        const MutexLock lock(mutex);
        return session && session->locker.isRunning();
    }

    [[nodiscard]] std::size_t refusals() const {
        const MutexLock lock(mutex);
        return session ? readFile(session->folder.refusals()).size() : 0;
    }

    [[nodiscard]] bool send(int signal) const {
        const MutexLock lock(mutex);
        if (!session) return false;
        const pid_t leader = session->locker.id();
        if (!isScripted(kind)) return ::kill(leader, signal) == 0;
        // i3lock's second process keeps its window on top.
        bool isSent = false;
        for (const pid_t process : processesInSession(leader))
            isSent |= runs(process, name(kind)) && ::kill(process, signal) == 0;
        return isSent;
    }

    void end() {
        notifier.reset();
        std::optional<Session> former;
        const MutexLock lock(mutex);
        std::swap(former, session);
        if (former && isScripted(kind)) endSession(former->locker);
    }

    const std::string displayName;
    const Kind kind;
    std::function<void()> ended;
    std::unique_ptr<QSocketNotifier> notifier;
    mutable Mutex mutex;
    std::optional<Session> session GUARDED_BY(mutex);
};

ScreenLocker::ScreenLocker(std::string displayName, Kind kind)
    : state_(std::make_unique<State>(std::move(displayName), kind)) {}

ScreenLocker::~ScreenLocker() {
    state_->end();
}

std::expected<void, std::string> ScreenLocker::lock(std::string_view password) {
    if (isRunning()) return std::unexpected("The screen is locked already.");
    std::expected<void, std::string> locked;
    for (int tries = 0; tries < startTries; ++tries) {
        locked = tryToLock(password);
        if (locked || !locked.error().starts_with(wrapperError)) break;
    }
    return locked;
}

std::expected<void, std::string> ScreenLocker::tryToLock(std::string_view password) {
    state_->end();
    RootWatch watch(state_->displayName);
    if (!watch.isAlive()) {
        return std::unexpected("The display " + state_->displayName + " does not answer.");
    }
    auto folder = CheckerFolder::create(password, state_->kind);
    if (!folder) return std::unexpected(folder.error());
    const OwnedFile messages(::open(folder->messages().c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    auto locker = ChildProcess::start(
        {.arguments = command(state_->kind),
         .environment = {"DISPLAY=" + state_->displayName, "LC_ALL=C.UTF-8",
                         "HOME=" + folder->path().string(), "XSECURELOCK_SAVER=saver_blank",
                         "GSETTINGS_BACKEND=memory", "NO_AT_BRIDGE=1",
                         "LD_PRELOAD=libpam_wrapper.so", "PAM_WRAPPER=1",
                         "PAM_WRAPPER_SERVICE_DIR=" + folder->services().string()},
         .standardError = messages.get(),
         // The signal lets a script end its children.
         .endSignal = isScripted(state_->kind) ? SIGTERM : SIGKILL});
    if (!locker) return std::unexpected(locker.error());
    const Start start = waitForLocker(watch, *locker);
    const std::string said = readFile(folder->messages());
    if (said.contains("cannot be preloaded")) {
        return std::unexpected("libpam_wrapper.so is not installed.");
    }
    if (const auto at = said.find(wrapperError); start != Start::up && at != std::string::npos)
        return std::unexpected(said.substr(at, said.find('\n', at) - at));
    switch (start) {
        case Start::up:
            break;
        case Start::ended:
            return std::unexpected(std::string(name(state_->kind)) +
                                   " ended at once: " + said.substr(0, said.find('\n')));
        case Start::late:
            return std::unexpected(std::string(name(state_->kind)) +
                                   " did not lock the screen within ten seconds.");
    }
    const int end = locker->endDescriptor();
    state_->begin({std::move(*folder), std::move(*locker)});
    state_->notifier = std::make_unique<QSocketNotifier>(end, QSocketNotifier::Read);
    QObject::connect(state_->notifier.get(), &QSocketNotifier::activated,
                     [state = state_.get()](QSocketDescriptor, QSocketNotifier::Type) {
                         state->notifier->setEnabled(false);
                         // The callback may destroy this locker.
                         if (const auto callback = state->ended) callback();
                     });
    return {};
}

bool ScreenLocker::isRunning() const {
    return state_->isRunning();
}

std::size_t ScreenLocker::refusals() const {
    return state_->refusals();
}

void ScreenLocker::onEnded(std::function<void()> callback) {
    state_->ended = std::move(callback);
}

void ScreenLocker::kill() {
    state_->end();
}

bool ScreenLocker::send(int signal) const {
    return state_->send(signal);
}

}  // namespace marrowby
