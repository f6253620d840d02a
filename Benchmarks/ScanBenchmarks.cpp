// SPDX-License-Identifier: Apache-2.0

// A camera's picture through the whole chain: from the capture queue to the observation on the main
// thread. The first argument is the number of
// processors.

#include "Benchmarks/Allocations.h"
#include "Benchmarks/HandCamera.h"
#include "Benchmarks/Material.h"
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/ThreadWorkQueues.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Vision/OpenCvFourierTransform.h"
#include "Unlock/Linux/LinuxWords.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <sched.h>

namespace marrowby {
namespace {

using Pictures = std::vector<std::shared_ptr<const PixelBuffer>>;

/// Threads started meanwhile stay on that many processors.
class FewProcessors {
  public:
    explicit FewProcessors(std::int64_t count) {
        ::sched_getaffinity(0, sizeof all_, &all_);
        cpu_set_t few;
        CPU_ZERO(&few);
        for (std::size_t i = 0; i < CPU_SETSIZE && CPU_COUNT(&few) < count; ++i) {
            if (CPU_ISSET(i, &all_)) CPU_SET(i, &few);
        }
        if (::sched_setaffinity(0, sizeof few, &few) != 0)
            std::cerr << "The number of processors can’t be set.\n";
    }
    ~FewProcessors() { ::sched_setaffinity(0, sizeof all_, &all_); }
    FewProcessors(const FewProcessors&) = delete;
    FewProcessors& operator=(const FewProcessors&) = delete;

  private:
    cpu_set_t all_{};
};

/// An application during a scan.
class Bench {
  public:
    explicit Bench(const benchmark::State& state) : processors_(state.range(0)) {
        vision_ = material_.loadVision(queues_.background());
        scanner_.emplace(
            camera_,
            CameraFaceScanner::Services{.queues = queues_,
                                        .mainThread = mainThread_,
                                        .clock = clock_,
                                        .imaging = material_.imaging,
                                        .vision = *vision_,
                                        .fourier = fourier_,
                                        .registry = registry_,
                                        .words = linuxWords},
            [this]() -> std::expected<std::shared_ptr<FaceEmbedder>, FaceModelError> {
                return material_.loadEmbedder();
            },
            [this]() -> std::expected<std::shared_ptr<AntiSpoofScoring>, RealFaceModelError> {
                isLoaded_ = true;
                return material_.loadRealFace();
            });
        // Frames before the models are loaded are dropped.
        QObject::connect(&again_, &QTimer::timeout, [this] {
            if (!seen_ && picture_) camera_->show(picture_);
        });
        again_.start(300);
        scanner_->follow(true);
        while (!isLoaded_)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        scanner_->start(ScanID{},
                        {.cameraID = std::nullopt,
                         .identities = std::make_shared<const std::vector<FaceIdentity>>(
                             material_.identities(10))},
                        {.onFrame = [this](ScanID, const ScanObservation& seen) { seen_ = seen; },
                         .onCameraFailed = {}});
    }

    /// Whether a face was found.
    bool see(const Pictures& pictures) {
        seen_.reset();
        // To and fro, as if the person went on.
        const std::size_t last = pictures.size() - 1;
        const std::size_t turn = last > 0 ? seenCount_++ % (2 * last) : 0;
        picture_ = pictures[std::min(turn, 2 * last - turn)];
        camera_->show(picture_);
        while (!seen_)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return std::holds_alternative<ScanObservation::Face>(*seen_);
    }

  private:
    FewProcessors processors_;
    Material& material_ = Material::shared();
    QtMainThread mainThread_;
    UnixSystemClock clock_;
    CameraUseRegistry registry_;
    OpenCvFourierTransform fourier_;
    std::unique_ptr<OpenCvFaceVision> vision_;
    /// After what a frame under way uses: their end waits for it.
    ThreadWorkQueues queues_;
    std::shared_ptr<HandCamera> camera_ = std::make_shared<HandCamera>();
    std::atomic<bool> isLoaded_ = false;
    std::optional<CameraFaceScanner> scanner_;
    std::optional<ScanObservation> seen_;
    std::shared_ptr<const PixelBuffer> picture_;
    std::size_t seenCount_ = 0;
    QTimer again_;
};

void wholeFrame(benchmark::State& state) {
    Bench bench(state);
    const auto shown =
        Material::shared().film(static_cast<int>(state.range(1)), static_cast<int>(state.range(2)));
    (void)bench.see(shown);
    const Allocations before = Allocations::now();
    for (auto _ : state) {
        if (!bench.see(shown)) state.SkipWithError("no face seen");
    }
    const Allocations after = Allocations::now();
    const auto perFrame = [&](std::int64_t value) {
        return benchmark::Counter(static_cast<double>(value), benchmark::Counter::kAvgIterations);
    };
    state.counters["allocations"] = perFrame(after.count - before.count);
    state.counters["kilobytes"] = perFrame((after.bytes - before.bytes) / 1024);
}
BENCHMARK(wholeFrame)
    ->Args({1, 640, 480})
    ->Args({2, 640, 480})
    ->Args({2, 1280, 720})
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

/// The first frame of the first scan after the start, or (1) the tenth.
void firstFrame(benchmark::State& state) {
    const auto shown = Material::shared().film(640, 480);
    for (auto _ : state) {
        Bench bench(state);
        for (int i = 0; i < 9 * state.range(1); ++i)
            (void)bench.see(shown);
        const auto began = std::chrono::steady_clock::now();
        (void)bench.see(shown);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count());
    }
}
BENCHMARK(firstFrame)
    ->Args({2, 0})
    ->Args({2, 1})
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

}  // namespace
}  // namespace marrowby
