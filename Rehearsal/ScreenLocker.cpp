#include "Rehearsal/ScreenLocker.h"

#include "Platforms/Linux/CoveringFrame.h"
#include "Rehearsal/ChildProcess.h"
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

constexpr std::chrono::seconds startLimit{10};

// Called with the folder. At the end of its input, which comes with our own end at the latest, it
// removes the folder and what the PAM wrapper of a killed locker has left behind.
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

// A login's own checker takes a while too, so that whoever typed knows of it before the locker
// ends. Versions of pam_exec differ in whether a NUL ends what they write.
constexpr const char* checkerScript = R"sh(#!/bin/sh
sleep 0.2
tr -d '\000' | cmp -s - "$(dirname "$0")/password"
)sh";

// Locks once, and ends when it is unlocked. The program of that name stays otherwise, and now and
// then is deaf to being asked to end.
constexpr const char* xscreensaverScript = R"sh(
trap 'trap "" TERM; kill 0; sleep 0.5; kill -s KILL 0' EXIT
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
trap 'trap "" TERM; kill 0; sleep 0.5; kill -s KILL 0' EXIT
trap 'exit 1' TERM
export DBUS_SESSION_BUS_ADDRESS="unix:path=$HOME/bus"
dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS" &
until [ -S "$HOME/bus" ]; do sleep 0.02; done
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

constexpr const char* xscreensaverSettings =
    "mode: blank\nlock: True\nfade: False\nunfade: False\ndpmsEnabled: False\n";

/// What the lockers ask PAM for.
constexpr std::array pamServices{"i3lock",           "xsecurelock", "xscreensaver",
                                 "mate-screensaver", "common-auth", "other"};

/// An ordinary user of every Debian system.
constexpr const char* ordinaryUser = "www-data";

const char* name(ScreenLocker::Kind kind) {
    switch (kind) {
        case ScreenLocker::Kind::i3lock:
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

/// Whether a script runs it, as an ordinary user.
bool isScripted(ScreenLocker::Kind kind) {
    return kind == ScreenLocker::Kind::xscreensaver || kind == ScreenLocker::Kind::mateScreensaver;
}

std::vector<std::string> command(ScreenLocker::Kind kind) {
    switch (kind) {
        case ScreenLocker::Kind::i3lock:
            return {"i3lock", "-n", "-c", "204060"};
        case ScreenLocker::Kind::xsecurelock:
            return {"xsecurelock"};
        case ScreenLocker::Kind::xscreensaver:
        case ScreenLocker::Kind::mateScreensaver:
            break;
    }
    // Without new privileges its checker is no setuid program, which would refuse the wrapper.
    std::vector<std::string> words{"setpriv", "--no-new-privs"};
    if (::geteuid() == 0) {
        const std::string user = ordinaryUser;
        for (const auto& word :
             {"--reuid=" + user, "--regid=" + user, std::string("--init-groups")})
            words.push_back(word);
    }
    const bool isMate = kind == ScreenLocker::Kind::mateScreensaver;
    words.insert(words.end(), {"sh", "-c", isMate ? mateScreensaverScript : xscreensaverScript});
    return words;
}

/// Gives what is in a folder to who runs the locker.
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
/// wrapper copies elsewhere. Gone when destroyed, and when this process dies.
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
            !writeFile(folder.messages(), "", 0600) || !giveAway(folder.path_, kind)) {
            return std::unexpected("The screen locker's private folder could not be filled.");
        }
        return folder;
    }

    CheckerFolder(CheckerFolder&&) noexcept = default;
    CheckerFolder& operator=(CheckerFolder&&) noexcept = default;
    // Members go in reverse order: the end of the keeper's input, then the wait for the keeper.

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::filesystem::path services() const { return path_ / "services"; }
    [[nodiscard]] std::filesystem::path messages() const { return path_ / "messages"; }

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
        : connection_(::xcb_connect(displayName.c_str(), nullptr)) {
        if (!isAlive()) return;
        root_ = ::xcb_setup_roots_iterator(::xcb_get_setup(connection_)).data->root;
        const std::array<std::uint32_t, 1> events{XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
                                                  XCB_EVENT_MASK_FOCUS_CHANGE};
        ::free(::xcb_request_check(
            connection_, ::xcb_change_window_attributes_checked(connection_, root_,
                                                                XCB_CW_EVENT_MASK, events.data())));
    }
    RootWatch(const RootWatch&) = delete;
    RootWatch& operator=(const RootWatch&) = delete;
    ~RootWatch() { ::xcb_disconnect(connection_); }

    [[nodiscard]] bool isAlive() const { return ::xcb_connection_has_error(connection_) == 0; }
    [[nodiscard]] int descriptor() const { return ::xcb_get_file_descriptor(connection_); }

    /// Takes in what has arrived; true when its window is there and it holds the keyboard.
    [[nodiscard]] bool lockerIsUp() {
        while (auto* event = ::xcb_poll_for_event(connection_)) {
            note(*event);
            ::free(event);
        }
        return isMapped_ && isGrabbed_;
    }

  private:
    void note(const xcb_generic_event_t& event) {
        const auto kind = event.response_type & 0x7F;
        if (kind == XCB_MAP_NOTIFY) {
            const auto& mapped = reinterpret_cast<const xcb_map_notify_event_t&>(event);
            isMapped_ |= mapped.override_redirect != 0 && coversScreen(mapped.window);
        } else if (kind == XCB_FOCUS_OUT || kind == XCB_FOCUS_IN) {
            const auto mode = reinterpret_cast<const xcb_focus_in_event_t&>(event).mode;
            if (mode == XCB_NOTIFY_MODE_GRAB) isGrabbed_ = true;
            if (mode == XCB_NOTIFY_MODE_UNGRAB) isGrabbed_ = false;
        }
    }

    [[nodiscard]] bool coversScreen(xcb_window_t window) const {
        auto* const found =
            ::xcb_get_geometry_reply(connection_, ::xcb_get_geometry(connection_, window), nullptr);
        if (found == nullptr) return false;
        const double borders = 2.0 * found->border_width;
        const Rect frame{.x = double(found->x),
                         .y = double(found->y),
                         .width = found->width + borders,
                         .height = found->height + borders};
        ::free(found);
        const auto& screen = *::xcb_setup_roots_iterator(::xcb_get_setup(connection_)).data;
        return covers(frame, {.x = 0,
                              .y = 0,
                              .width = double(screen.width_in_pixels),
                              .height = double(screen.height_in_pixels)});
    }

    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_NONE;
    bool isMapped_ = false;
    bool isGrabbed_ = false;
};

/// The process of the session of `leader` that runs the program of this name.
std::optional<pid_t> findInSession(pid_t leader, std::string_view program) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename();
        pid_t process = 0;
        std::from_chars(name.data(), name.data() + name.size(), process);
        if (process > 0 && ::getsid(process) == leader &&
            std::filesystem::read_symlink(entry.path() / "exe", error).filename() == program) {
            return process;
        }
    }
    return std::nullopt;
}

enum class Start { up, ended, late };

Start waitForLocker(RootWatch& watch, const ChildProcess& locker) {
    const auto deadline = std::chrono::steady_clock::now() + startLimit;
    while (true) {
        if (!locker.isRunning() || !watch.isAlive()) return Start::ended;
        if (watch.lockerIsUp()) return Start::up;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return Start::late;
        std::array<pollfd, 2> wanted{
            pollfd{.fd = watch.descriptor(), .events = POLLIN, .revents = 0},
            pollfd{.fd = locker.endDescriptor(), .events = POLLIN, .revents = 0}};
        ::poll(wanted.data(), wanted.size(), static_cast<int>(left.count()));
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

    [[nodiscard]] bool send(int signal) const {
        const MutexLock lock(mutex);
        if (!session) return false;
        const pid_t leader = session->locker.id();
        const auto holder =
            isScripted(kind) ? findInSession(leader, name(kind)) : std::optional(leader);
        return holder && ::kill(*holder, signal) == 0;
    }

    void end() {
        notifier.reset();
        std::optional<Session> former;
        const MutexLock lock(mutex);
        std::swap(former, session);
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
         // What it runs must end with it.
         .endSignal = isScripted(state_->kind) ? SIGTERM : SIGKILL});
    if (!locker) return std::unexpected(locker.error());
    const Start start = waitForLocker(watch, *locker);
    const std::string said = readFile(folder->messages());
    if (said.contains("cannot be preloaded")) {
        return std::unexpected("libpam_wrapper.so is not installed.");
    }
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
                         // It may destroy this locker.
                         if (const auto callback = state->ended) callback();
                     });
    return {};
}

bool ScreenLocker::isRunning() const {
    return state_->isRunning();
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
