// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/UnlockProgram.h"

#include "Platforms/Linux/Desktop/Account.h"
#include "Platforms/Linux/Desktop/BusAddress.h"
#include "Platforms/Linux/Desktop/FreedesktopNotices.h"
#include "Platforms/Linux/Desktop/GettextCatalogue.h"
#include "Platforms/Linux/Desktop/JournaldLog.h"
#include "Platforms/Linux/Desktop/JsonDefaultsStore.h"
#include "Platforms/Linux/Desktop/LinuxSystemSettings.h"
#include "Platforms/Linux/Desktop/ProcessHardening.h"
#include "Platforms/Linux/Desktop/ProcessSignals.h"
#include "Platforms/Linux/Desktop/SingleInstance.h"
#include "Platforms/Linux/Desktop/ThreadWorkQueues.h"
#include "Platforms/Linux/Desktop/XdgFolders.h"
#include "Platforms/Linux/Input/UinputKeyEvents.h"
#include "Platforms/Linux/Secrets/SecretServiceKeyStore.h"
#include "Platforms/Linux/Session/DesktopSession.h"
#include "Platforms/Linux/Session/GraphicalSession.h"
#include "Platforms/Linux/Session/LogindKernelTyping.h"
#include "Platforms/Linux/Vision/OpenCvFaceVision.h"
#include "Platforms/Linux/Vision/OpenCvFourierTransform.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "Platforms/Linux/X11/X11WindowServer.h"
#include "Platforms/Linux/X11/XTestKeyEvents.h"
#include "Platforms/Posix/OpenSslCipher.h"
#include "Platforms/Posix/PosixFileSystem.h"
#include "Unlock/Command.h"
#include "Unlock/Fact.h"
#include "Unlock/Linux/CommandLine.h"
#include "Unlock/Linux/LinuxWords.h"
#include "Unlock/Linux/MissingModelsPresenter.h"
#include "Unlock/Linux/ModelPreparation.h"
#include "Unlock/Linux/QtApplicationWindows.h"
#include "Unlock/Linux/QtStatusItem.h"
#include "Unlock/SelfCheck.h"
#include "Unlock/UnlockApplication.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <QApplication>
#include <QClipboard>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QSessionManager>
#include <QTranslator>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

namespace marrowby {

namespace {

constexpr const char* programName = "marrowby-unlock";
constexpr const char* applicationIdentifier = "app.quenby.unlock";

using Path = std::filesystem::path;

struct ProgramPaths {
    XdgFolders folders;
    std::string userName;
    Path program;

    [[nodiscard]] Path userModels() const { return folders.dataHome / programName / "models"; }
    [[nodiscard]] Path installed() const {
        return program.parent_path().parent_path() / "share" / programName;
    }
    [[nodiscard]] std::vector<Path> modelFolders() const {
        return {userModels(), installed() / "models"};
    }
    [[nodiscard]] Path script() const { return installed() / "prepare-pack"; }
    [[nodiscard]] bool hasScript() const {
        std::error_code error;
        return std::filesystem::exists(script(), error);
    }
    [[nodiscard]] std::string preparingCommand() const {
        return (hasScript() ? script().string() : "Tools/prepare-pack") + " '" +
               userModels().string() + "'";
    }
    [[nodiscard]] Path lockFile() const {
        const char* runtime = std::getenv("XDG_RUNTIME_DIR");
        const Path folder = runtime != nullptr ? runtime : "";
        return (folder.is_absolute() ? folder : folders.dataHome) /
               (std::string(applicationIdentifier) + ".lock");
    }
};

std::unique_ptr<KeyEvents> makeKeyEvents(const DesktopSession::Places& places,
                                         MainThread& mainThread, const JournaldLog& log) {
    if (places.display) {
        auto keyEvents = std::make_unique<XTestKeyEvents>(*places.display);
        keyEvents->onDoubt = [&mainThread, &log](const LockerDoubt& doubt) {
            mainThread.post(
                [&log, line = "Nothing was typed: " + description(doubt)] { log.write(line); });
        };
        return keyEvents;
    }
    const char* display = std::getenv("DISPLAY");
    const auto session = std::make_shared<const LogindKernelTyping>(
        places.systemBus, display != nullptr ? display : "");
    return std::make_unique<UinputKeyEvents>(
        KeyboardLayout::Names::fromFile(), [session] { return session->mayType(); },
        &XTestKeyEvents::sleep);
}

std::optional<std::string> inWords(const LockState& session) {
    const auto fact = [](Phrase what, bool value) {
        return translated(what, {{"value", value ? Phrase("true") : Phrase("false")}});
    };
    std::string facts;
    if (session.isScreenLocked) facts = fact(Phrase("locked is {value}"), *session.isScreenLocked);
    if (session.isOnConsole)
        facts += (facts.empty() ? "" : ", ") +
                 fact(Phrase("on the console is {value}"), *session.isOnConsole);
    if (facts.empty()) return std::nullopt;
    return facts;
}

/// The composition root. Members are in order of construction and destroyed in reverse.
class CompositionRoot {
  public:
    CompositionRoot(ProgramPaths paths, PlatformFactory& factory, const JournaldLog& log)
        : paths_(std::move(paths)),
          factory_(factory),
          log_(log),
          missing_(
              paths_.preparingCommand(),
              {.onLookAgain = [this] { lookAgain(); },
               .onQuit = &CompositionRoot::end,
               .onPrepare = paths_.hasScript() ? std::function([this] { prepareModels(); })
                                               : std::function<void()>(),
               .onCancel =
                   [this] { stopPreparing(translated("It was stopped. What has come is kept.")); },
               .onCopy =
                   [](const std::string& command) {
                       QGuiApplication::clipboard()->setText(QString::fromStdString(command));
                   }}) {
        session_.canTypeThroughKernel = [this] { return keyEvents_->canType(); };
    }

    /// Starts the application, or shows the window that says what is missing.
    void launch(bool isAtLogin) {
        session_.onAway = [this](const std::string& sentence) {
            log_.write({.message = sentence, .event = std::string(logevent::sessionAway)});
        };
        session_.start();
        launch_ = {.isAtLogin = isAtLogin, .isVisible = !session_.lockState().isLocked()};
        const auto started = start();
        if (started) return;
        log_.write(started.error());
        missing_.say(started.error());
        if (!launch_.isAtLogin) reopen();
    }

    [[nodiscard]] int selfCheck() {
        session_.start();
        SecretServiceKeyStore trialKeyStore(
            factory_.keyringBus(),
            {.service = "app.quenby.unlock.vault.self-check", .account = "self-check"});
        SelfCheck check(
            {.words = linuxWords,
             .mainThread = *mainThread_,
             .clock = *clock_,
             .queues = queues_,
             .lockState = session_.lockState(),
             .sessionInWords = [this] { return inWords(session_.lockState().state()); },
             .spaceKeys = session_.spaceKeys(),
             .keyEvents = *keyEvents_,
             .camera = scanCamera_,
             .imaging = imaging_,
             .models = models_,
             .pack = factory_.models(paths_.modelFolders()),
             .preparingAdvice = translated("Prepare them with {command}.",
                                           {{"command", paths_.preparingCommand()}}),
             .trialKeyStore = trialKeyStore,
             .cipher = cipher_,
             .ownerCheck = *ownerCheck_,
             .windowServer = windowServer_,
             .sessionUnlocking = session_.unlocking()},
            [](const std::string& line) { std::cout << line << '\n'
                                                    << std::flush; },
            [](bool isAllThere) {
                QCoreApplication::exit(isAllThere ? EXIT_SUCCESS : EXIT_FAILURE);
            });
        mainThread_->post([&check] { check.start(); });
        return QCoreApplication::exec();
    }

    void reopen() {
        if (application_) {
            application_->shouldHandleReopen();
        } else {
            windows_.show(ApplicationWindows::Window::welcome, missing_);
        }
    }

    void carryOut(const std::vector<std::string>& words,
                  const std::function<void(const SingleInstance::Reply&)>& reply);

    void terminate() {
        if (application_) application_->willTerminate();
    }
    void loseDisplay() {
        log_.write({.message = "Marrowby Unlock ends, because its display is gone.",
                    .event = std::string(logevent::displayLost)});
        terminate();
    }

    static void end() { QCoreApplication::exit(EXIT_SUCCESS); }
    /// An interrupted check fails.
    static void abandonCheck() { QCoreApplication::exit(EXIT_FAILURE); }

  private:
    [[nodiscard]] std::expected<void, std::string> start();
    void prepareModels() {
        using Window = ApplicationWindows::Window;
        missing_.setProgress(translated("Starting"));
        windows_.refresh(Window::welcome);
        preparation_ = std::make_unique<ModelPreparation>(
            paths_.script(), paths_.userModels(),
            ModelPreparation::Callbacks{.onProgress =
                                            [this](const std::string& line) {
                                                missing_.setProgress(line);
                                                windows_.refresh(Window::welcome);
                                            },
                                        .onEnd =
                                            [this](const std::string& problem) {
                                                stopPreparing(problem);
                                                if (problem.empty()) lookAgain();
                                            }});
    }
    void stopPreparing(const std::string& problem) {
        preparation_.reset();
        missing_.setProgress(std::nullopt);
        missing_.say(problem);
        windows_.refresh(ApplicationWindows::Window::welcome);
    }
    void lookAgain() {
        const auto started = start();
        if (!started) {
            missing_.say(started.error());
            windows_.refresh(ApplicationWindows::Window::welcome);
            return;
        }
        windows_.close(ApplicationWindows::Window::welcome);
        reopen();
    }

    const ProgramPaths paths_;
    PlatformFactory& factory_;
    const JournaldLog& log_;

    const std::unique_ptr<SystemClock> clock_ = factory_.makeClock();
    const std::unique_ptr<MainThread> mainThread_ = factory_.makeMainThread();
    OpenCvImaging imaging_;
    OpenCvFourierTransform fourier_;
    OpenCvNeuralModels models_;
    std::unique_ptr<FaceVision> scanVision_;
    std::unique_ptr<FaceVision> enrollmentVision_;
    OpenSslCipher cipher_;
    PosixFileSystem files_;
    JsonDefaultsStore defaults_{files_, paths_.folders.configHome / programName / "settings.json"};
    LinuxSystemSettings systemSettings_{files_, paths_.folders.configHome, paths_.program};
    SecretServiceKeyStore keyStore_{factory_.keyringBus()};
    const std::unique_ptr<OwnerCheck> ownerCheck_ = factory_.makeOwnerCheck(*mainThread_);
    const std::shared_ptr<MacPasswordVerifying> passwordVerifier_ =
        factory_.makePasswordVerifier(paths_.userName);

    const DesktopSession::Places sessionPlaces_ = DesktopSession::Places::ofThisProcess();
    DesktopSession session_{sessionPlaces_, *mainThread_};
    const std::unique_ptr<KeyEvents> keyEvents_ = makeKeyEvents(sessionPlaces_, *mainThread_, log_);
    const std::shared_ptr<CaptureSession> scanCamera_ = factory_.makeCamera(*clock_);
    const std::shared_ptr<CaptureSession> enrollmentCamera_ = factory_.makeCamera(*clock_);

    X11WindowServer windowServer_{sessionPlaces_.display};
    QtApplicationWindows windows_;
    FreedesktopNotices notices_{
        sessionPlaces_.sessionBus, [this](const std::string& sentence) {
            log_.write({.message = sentence, .event = std::string(logevent::noNotices)});
        }};
    FreedesktopNotices unlockNotices_{sessionPlaces_.sessionBus, {}};
    QtStatusItem statusItem_{sessionPlaces_.sessionBus};
    MissingModelsPresenter missing_;
    std::unique_ptr<ModelPreparation> preparation_;
    UnlockOpening::Launch launch_;
    /// Destroyed before everything that its pending work uses.
    ThreadWorkQueues queues_;
    std::unique_ptr<UnlockApplication> application_;
};

void CompositionRoot::carryOut(const std::vector<std::string>& words,
                               const std::function<void(const SingleInstance::Reply&)>& reply) {
    const CommandAnswer answer = [reply](const CommandReply& given) {
        reply({.status = static_cast<int>(given.status), .text = given.text});
    };
    const auto command = Command::parse(words);
    if (!command) return answer({.status = CommandReply::Status::misused, .text = command.error()});
    if (application_) return application_->carryOut(*command, answer);
    answer({.status = CommandReply::Status::no, .text = missing_.problem()});
    if (command->verb == Command::Verb::settings) reopen();
    if (command->verb == Command::Verb::quit) end();
}

std::expected<void, std::string> CompositionRoot::start() {
    auto pack = factory_.models(paths_.modelFolders());
    if (!pack) return std::unexpected(std::move(pack.error()));
    for (auto* vision : {&scanVision_, &enrollmentVision_}) {
        *vision = std::make_unique<OpenCvFaceVision>(
            OnnxSource(pack->folder / pack->finderFile, pack->sumOf("finder")),
            OnnxSource(pack->folder / pack->landmarksFile, pack->sumOf("landmarks")),
            queues_.background());
    }
    application_ = std::make_unique<UnlockApplication>(
        UnlockPlatform{.words = linuxWords,
                       .mainThread = *mainThread_,
                       .clock = *clock_,
                       .queues = queues_,
                       .lockEvents = session_.lockEvents(),
                       .lockState = session_.lockState(),
                       .inputIdle = session_.inputIdle(),
                       .spaceKeys = session_.spaceKeys(),
                       .scanCamera = scanCamera_,
                       .enrollmentCamera = enrollmentCamera_,
                       .scanVision = *scanVision_,
                       .enrollmentVision = *enrollmentVision_,
                       .models = models_,
                       .imaging = imaging_,
                       .fourier = fourier_,
                       .cipher = cipher_,
                       .files = files_,
                       .keyStore = keyStore_,
                       .ownerCheck = *ownerCheck_,
                       .passwordVerifier = *passwordVerifier_,
                       .defaults = defaults_,
                       .keyEvents = *keyEvents_,
                       .systemSettings = systemSettings_,
                       .windowServer = windowServer_,
                       .sessionUnlocking = session_.unlocking(),
                       .notices = &notices_,
                       .unlockNotices = &unlockNotices_,
                       .statusItem = &statusItem_},
        UnlockModel::Resources{
            .dataBase = paths_.folders.dataHome, .testTag = {}, .models = *std::move(pack)},
        windows_,
        UnlockApplication::Hooks{.log =
                                     [this](const LogLine& line) {
                                         log_.write(
                                             {.message = line.withoutNames(),
                                              .event = std::string(line.event),
                                              .subject = line.subject(),
                                              .isDebugging = line.level == LogLine::Level::debug});
                                     },
                                 .terminate = &CompositionRoot::end});
    application_->didFinishLaunching(launch_);
    factory_.didLaunch(*application_);
    return {};
}

/// Set while the event loop runs.
CompositionRoot* activeRoot = nullptr;

/// Qt calls exit() when the display is lost. Stops typing and waits for it, then skips static
/// destructors, as other threads may still use the objects.
void endWithoutDisplay() {
    CompositionRoot* const root = std::exchange(activeRoot, nullptr);
    if (root == nullptr) return;
    root->loseDisplay();
    std::_Exit(EXIT_FAILURE);
}

/// Qt's own texts, such as those of a text field's menu, and the direction of writing.
void speakTheUsersLanguage(QTranslator& textsOfQt) {
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    // Translators: “right to left” in languages that are written so, else as it stands.
    const bool isMirrored = translated("left to right") == "right to left";
    if (textsOfQt.load(QLocale::system(), QStringLiteral("qtbase"), QStringLiteral("_"), folder))
        QApplication::installTranslator(&textsOfQt);
    QApplication::setLayoutDirection(isMirrored ? Qt::RightToLeft : Qt::LeftToRight);
}

int refuse(const std::string& sentence, CommandReply::Status status = CommandReply::Status::no) {
    std::cerr << sentence << '\n';
    return static_cast<int>(status);
}

std::string inWords(SingleInstance::Unreached unreached) {
    switch (unreached) {
        case SingleInstance::Unreached::noBus:
            return translated(
                "There is no session bus here over which Marrowby Unlock could be reached.");
        case SingleInstance::Unreached::notRunning:
            return translated("Marrowby Unlock isn’t running: open it from the applications menu.");
        case SingleInstance::Unreached::silent:
            return translated("Marrowby Unlock runs, but didn’t answer.");
    }
    return {};
}

/// Has the running instance carry out the command, and prints its reply.
CommandReply::Status tell(const Command& command, const std::vector<std::string>& words) {
    const auto reply = SingleInstance::ask(busaddress::session(), words);
    if (!reply) {
        if (command.verb != Command::Verb::doctor) {
            std::cerr << inWords(reply.error()) << '\n';
            return CommandReply::Status::unreached;
        }
        std::cout << Fact{.subject = translated("Running"),
                          .isGood = false,
                          .what = inWords(reply.error())}
                         .line()
                  << '\n';
        return CommandReply::Status::no;
    }
    if (!reply->text.empty()) std::cout << reply->text << '\n' << std::flush;
    return static_cast<CommandReply::Status>(reply->status);
}

}  // namespace

int UnlockProgram::run(int argumentCount, char** arguments, PlatformFactory& factory) {
    std::error_code noProgram;
    static const GettextCatalogue catalogue(
        GettextCatalogue::folderFor(std::filesystem::read_symlink("/proc/self/exe", noProgram)));
    useCatalogue(&catalogue);
    const std::vector<std::string> words(arguments + std::min(argumentCount, 1),
                                         arguments + argumentCount);
    const auto wish = CommandLine::parse(words);
    if (!wish) return refuse(wish.error(), CommandReply::Status::misused);
    if (std::holds_alternative<CommandLine::Help>(*wish)) {
        std::cout << CommandLine::usage();
        return EXIT_SUCCESS;
    }
    if (std::holds_alternative<CommandLine::Version>(*wish)) {
        std::cout << "marrowby-unlock " MARROWBY_VERSION "\n";
        return EXIT_SUCCESS;
    }
    const JournaldLog log(programName, factory.journalSocket());
    if (!makeProcessUndumpable()) {
        return refuse(
            translated("This process’s memory can’t be kept private, so nothing was started."));
    }
    ProcessSignals signals;
    auto told = CommandReply::Status::done;
    if (const auto* command = std::get_if<Command>(&*wish)) {
        const QCoreApplication asking(argumentCount, arguments);
        told = tell(*command, words);
        // Qt's bus thread would go on, and complain, while static objects are destroyed.
        if (command->verb != Command::Verb::doctor) std::_Exit(static_cast<int>(told));
    }
    const auto* launch = std::get_if<CommandLine::Launch>(&*wish);
    const auto platform = graphicalsession::platform();
    if (!platform) return refuse(platform.error());
    graphicalsession::forgetStaleDisplay();
    if (!platform->empty()) qputenv("QT_QPA_PLATFORM", platform->c_str());

    // Started at login by its own autostart entry, not by the session manager.
    QApplication::setApplicationName(programName);
    QApplication::setApplicationDisplayName(QStringLiteral("Marrowby Unlock"));
    QApplication::setDesktopFileName(applicationIdentifier);
    QApplication application(argumentCount, arguments);
    QTranslator textsOfQt;
    speakTheUsersLanguage(textsOfQt);
    QApplication::setQuitOnLastWindowClosed(
        UnlockApplication::shouldTerminateAfterLastWindowClosed());
    QApplication::setWindowIcon(QIcon::fromTheme(applicationIdentifier));
    QObject::connect(
        &application, &QGuiApplication::commitDataRequest, &application,
        [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); },
        Qt::DirectConnection);

    const auto folders = XdgFolders::current();
    const auto account = Account::current();
    if (!folders || !account)
        return refuse(translated("This account has no home folder to keep anything in."));
    ProgramPaths paths{.folders = *folders,
                       .userName = account->name,
                       .program = QApplication::applicationFilePath().toStdString()};
    if (launch == nullptr) {
        CompositionRoot root(std::move(paths), factory, log);
        signals.start(&CompositionRoot::abandonCheck, [] {});
        return std::max(root.selfCheck(), static_cast<int>(told));
    }
    SingleInstance instance({.lockFile = paths.lockFile(), .sessionBus = busaddress::session()});
    switch (instance.claim()) {
        case SingleInstance::Claim::handedOver:
            return EXIT_SUCCESS;
        case SingleInstance::Claim::unreachable:
            return refuse(translated("Marrowby Unlock runs already, and doesn’t answer."));
        case SingleInstance::Claim::first:
            break;
    }

    CompositionRoot root(std::move(paths), factory, log);
    const auto reopen = [&root] { root.reopen(); };
    root.launch(launch->isAtLogin);
    signals.start(&CompositionRoot::end, reopen);
    instance.serve(
        {.onReopen = reopen,
         .onCommand = [&root](const std::vector<std::string>& command,
                              const std::function<void(const SingleInstance::Reply&)>& reply) {
             root.carryOut(command, reply);
         }});
    activeRoot = &root;
    (void)std::atexit(&endWithoutDisplay);
    const int status = QApplication::exec();
    activeRoot = nullptr;
    root.terminate();
    return status;
}

}  // namespace marrowby
