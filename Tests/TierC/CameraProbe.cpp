// camera-probe FRAMES: opens the kernel’s camera as a look does and prints, for each frame, the
// colours in the middle of its four quarters of the width: a digit for each of red, green and blue,
// 0 for none, 1 for full, ? for anything between. Ends with status 1 after three minutes.

#include "Platforms/Linux/OpenCvImaging.h"
#include "Platforms/Linux/QtMainThread.h"
#include "Platforms/Linux/ThreadWorkQueues.h"
#include "Platforms/Linux/UnixSystemClock.h"
#include "Platforms/Linux/V4l2CaptureSession.h"
#include "Platforms/Linux/V4l2SystemCalls.h"
#include "UnlockCore/Recognition/CameraManager.h"

#include <QCoreApplication>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

namespace marrowby {
namespace {

constexpr TimeInterval longestLook{180};

std::string colours(const Bitmap& image) {
    std::string text;
    const auto width = static_cast<std::size_t>(image.width());
    const std::size_t middle = static_cast<std::size_t>(image.height()) / 2 * image.bytesPerRow();
    for (std::size_t quarter = 0; quarter < 4; ++quarter) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const int value = image.bytes()[middle + (2 * quarter + 1) * width / 8 * 4 + channel];
            text += value < 10 ? '0' : value > 245 ? '1' : '?';
        }
        text += ' ';
    }
    return text + std::to_string(image.width()) + "x" + std::to_string(image.height());
}

int look(int frames) {
    QtMainThread mainThread;
    ThreadWorkQueues queues;
    const UnixSystemClock clock;
    const OpenCvImaging imaging;
    CameraUseRegistry registry;
    CameraManager camera(std::make_shared<V4l2CaptureSession>(std::make_shared<V4l2SystemCalls>()),
                         {.queues = queues,
                          .mainThread = mainThread,
                          .clock = clock,
                          .imaging = imaging,
                          .registry = registry},
                         640);
    camera.setOnFrame([&](const CameraFrame& frame) {
        mainThread.post([&, text = colours(frame.image)] {
            std::cout << text << '\n' << std::flush;
            if (--frames == 0) QCoreApplication::exit(EXIT_SUCCESS);
        });
    });
    if (const auto started = camera.start({}); !started) {
        std::cout << description(started.error()) << '\n';
        return EXIT_FAILURE;
    }
    const auto timer = mainThread.at(clock.now() + longestLook, TimeInterval(1),
                                     [] { QCoreApplication::exit(EXIT_FAILURE); });
    const int status = QCoreApplication::exec();
    camera.stop();
    return status;
}

}  // namespace
}  // namespace marrowby

int main(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    return argumentCount == 2 ? marrowby::look(std::atoi(arguments[1])) : EXIT_FAILURE;
}
