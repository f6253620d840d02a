// SPDX-License-Identifier: Apache-2.0
#include "Simulation/OnStage/StagePlatformFactory.h"

#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Pictures/ImageFiles.h"
#include "Simulation/OnStage/SceneServices.h"
#include "Simulation/People/Person.h"
#include "Simulation/Scenes/FilmReel.h"
#include "Simulation/Scenes/ModelFolder.h"
#include "Simulation/Scenes/SceneCatalogue.h"
#include "Simulation/Scenes/SceneFilm.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QSocketNotifier>
#include <QTimer>
#include <array>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace marrowby {

namespace {

/// The frame rate of the camera, while a window is open.
constexpr int observingMilliseconds = 66;
constexpr int idleMilliseconds = 500;

template <typename Visit>
void eachVisibleWindow(const Visit& visit) {
    for (const QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->isWindow() && !window->windowTitle().isEmpty())
            visit(*window);
}

/// The real clock, which can be set forward.
class OwnMovedClock final : public SystemClock {
  public:
    [[nodiscard]] Date now() const override { return moved.now(); }
    UnixSystemClock real;
    MovedClock moved{real};
};

/// The text that assistive technology reads.
std::string focused() {
    const QWidget* widget = QApplication::focusWidget();
    if (widget == nullptr) return {};
    const auto* button = dynamic_cast<const QAbstractButton*>(widget);
    const bool isSwitch = button != nullptr && button->isCheckable();
    return widget->accessibleName().toStdString() +
           (isSwitch ? button->isChecked() ? " (on)" : " (off)" : "");
}

ScriptedCamera::Device builtInCamera() {
    const char* const rate = std::getenv("MARROWBY_CAMERA_RATE");
    return rate != nullptr ? ScriptedCamera::builtInCamera(std::strtod(rate, nullptr))
                           : ScriptedCamera::builtInCamera();
}

}  // namespace

StagePlatformFactory::StagePlatformFactory(std::filesystem::path models)
    : models_(std::move(models)) {}

StagePlatformFactory::~StagePlatformFactory() = default;

std::expected<ModelPack, std::string> StagePlatformFactory::models(
    std::span<const std::filesystem::path> /*folders*/) {
    return modelsIn(models_);
}

std::unique_ptr<SystemClock> StagePlatformFactory::makeClock() {
    auto clock = std::make_unique<OwnMovedClock>();
    clock_ = &clock->moved;
    return clock;
}

std::unique_ptr<MainThread> StagePlatformFactory::makeMainThread() {
    auto mainThread = std::make_unique<MovedMainThread>(std::make_unique<QtMainThread>(), *clock_);
    mainThread_ = mainThread.get();
    observing_ = std::make_unique<QTimer>();
    QObject::connect(observing_.get(), &QTimer::timeout, observing_.get(), [this] { observe(); });
    observing_->start(observingMilliseconds);
    return mainThread;
}

std::string StagePlatformFactory::journalSocket() {
    const char* socket = std::getenv("MARROWBY_JOURNAL");
    return socket != nullptr ? socket : PlatformFactory::journalSocket();
}

std::shared_ptr<CaptureSession> StagePlatformFactory::makeCamera(const SystemClock& clock) {
    cameras_.push_back(std::make_shared<ScriptedCamera>(std::vector{builtInCamera()}, clock));
    return cameras_.back();
}

std::shared_ptr<MacPasswordVerifying> StagePlatformFactory::makePasswordVerifier(
    const std::string& /*userName*/) {
    return account_;
}

std::unique_ptr<OwnerCheck> StagePlatformFactory::makeOwnerCheck(MainThread& mainThread) {
    return std::make_unique<SceneOwner>(mainThread, ownerConfirms_);
}

void StagePlatformFactory::didLaunch(UnlockApplication& /*application*/) {
    input_ = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(input_.get(), &QSocketNotifier::activated, input_.get(),
                     [this] { readOrders(); });
    // Everything here ends with the program’s loop.
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, observing_.get(), [this] {
        observe();
        observing_->stop();
        input_->setEnabled(false);
    });
    say("launched");
}

void StagePlatformFactory::readOrders() {
    std::array<char, 512> buffer{};
    const ssize_t size = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (size <= 0) {
        input_->setEnabled(false);
        return;
    }
    unread_.append(buffer.data(), static_cast<std::size_t>(size));
    for (auto end = unread_.find('\n'); end != std::string::npos; end = unread_.find('\n')) {
        follow(unread_.substr(0, end));
        unread_.erase(0, end + 1);
    }
}

void StagePlatformFactory::follow(const std::string& order) {
    std::istringstream words(order);
    std::string verb;
    std::string name;
    std::size_t number = 0;
    words >> verb;
    if (verb == "password") {
        account_->setPassword(order.size() > verb.size() ? order.substr(verb.size() + 1) : "");
    } else if (verb == "owner") {
        words >> name;
        *ownerConfirms_ = name == "yes";
    } else if (verb == "clock" && words >> number) {
        clock_->move(TimeInterval(static_cast<double>(number)));
        mainThread_->clockMoved();
    } else if (verb == "turn" && user_) {
        user_->turnHead(clock_->now() - sceneBegan_);
    } else if (verb == "picture" && words >> name) {
        if (!savePicture(name)) return say("unknown: " + order);
    } else if (verb == "nobody") {
        film({.tells = "nobody"});
    } else if (verb == "seat" && words >> number && number < distinctPeople().size()) {
        seat(distinctPeople()[number]);
    } else if ((verb == "scene" || verb == "reel") && words >> name >> number &&
               number < distinctPeople().size()) {
        const auto scene = sceneNamed(name, distinctPeople()[number]);
        if (!scene) return say("unknown: " + order);
        user_.reset();
        verb == "scene" ? film(*scene) : playReel(*scene);
    } else {
        return say("unknown: " + order);
    }
    say("done: " + verb);
}

void StagePlatformFactory::film(const Scene& scene) {
    const Date began = clock_->now();
    show([this, &scene, began] {
        return [film = std::make_shared<SceneFilm>(scene, cast_),
                began](const ScriptedCamera::Shot& shot) {
            return film
                ->shoot({.at = shot.at - began,
                         .running = shot.running,
                         .frameTime = shot.frameTime,
                         .width = shot.width,
                         .height = shot.height})
                .picture;
        };
    });
}

void StagePlatformFactory::playReel(const Scene& scene) {
    const CaptureFormat format = builtInCamera().formats.front();
    const auto reel = std::make_shared<const FilmReel>(
        SceneFilm(scene, cast_), TimeInterval(1 / format.frameRates.front().maximum),
        static_cast<int>(format.width), static_cast<int>(format.height));
    show([&reel] {
        return [reel](const ScriptedCamera::Shot& shot) { return reel->at(shot.running); };
    });
}

void StagePlatformFactory::show(const std::function<ScriptedCamera::View()>& makeView) {
    sceneBegan_ = clock_->now();
    {
        const MutexLock lock(pictureMutex_);
        picture_.reset();
    }
    for (const auto& camera : cameras_) {
        camera->setView([this, view = makeView()](const ScriptedCamera::Shot& shot) {
            auto picture = view(shot);
            if (shot.running == TimeInterval{}) say("first picture");
            const MutexLock lock(pictureMutex_);
            picture_ = picture;
            return picture;
        });
    }
}

void StagePlatformFactory::seat(std::uint64_t person) {
    const auto user = std::make_shared<SceneUser>(person);
    film({.tells = "somebody who follows the ring",
          .actors = {{person, [user](TimeInterval time) { return user->at(time); }}},
          .seed = person});
    user_ = user;
}

void StagePlatformFactory::observe() {
    std::string page;
    std::string status;
    eachVisibleWindow([&](const QWidget& window) {
        page += (page.empty() ? "" : " | ") + window.windowTitle().toStdString();
        const auto* told = window.findChild<QLabel*>(QStringLiteral("status"));
        if (told != nullptr) status = told->text().toStdString();
        const auto* hint = window.findChild<QLabel*>(QStringLiteral("guide-hint"));
        if (hint != nullptr && user_)
            user_->heed(hintSaying(hint->text().toStdString()), clock_->now() - sceneBegan_);
    });
    observing_->setInterval(page.empty() ? idleMilliseconds : observingMilliseconds);
    if (page != std::exchange(page_, page)) say("page: " + page);
    if (status != std::exchange(status_, status)) say("status: " + status);
    const std::string focus = focused();
    if (focus != std::exchange(focus_, focus)) say("focus: " + focus);
}

bool StagePlatformFactory::savePicture(const std::string& file) const {
    const MutexLock lock(pictureMutex_);
    return picture_ && writePicture(file, *picture_);
}

void StagePlatformFactory::say(const std::string& line) {
    const std::string whole = line + "\n";
    [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, whole.data(), whole.size());
}

}  // namespace marrowby
