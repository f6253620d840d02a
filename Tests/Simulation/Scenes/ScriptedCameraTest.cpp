// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/ScriptedCamera.h"

#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

/// Work waits until the test runs it.
class ManualQueue final : public WorkQueue {
  public:
    std::deque<std::function<void()>> waiting;

    void async(std::function<void()> work) override { waiting.push_back(std::move(work)); }
    void run() {
        while (!waiting.empty()) {
            const auto work = std::move(waiting.front());
            waiting.pop_front();
            work();
        }
    }
};

/// Lets the test take the steps of the one running pacing.
struct ManualTime final : SystemClock {
    class Running final : public Pacing {
      public:
        Running(ManualTime& time, std::function<TimeInterval()> step) : time_(time) {
            time_.step = std::move(step);
        }
        ~Running() override { time_.step = {}; }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

      private:
        ManualTime& time_;
    };

    [[nodiscard]] Date now() const override { return time; }
    StartPacing start() {
        return [this](std::function<TimeInterval()> each) {
            return std::make_unique<Running>(*this, std::move(each));
        };
    }

    Date time;
    std::function<TimeInterval()> step;
};

std::shared_ptr<const PixelBuffer> onePixel(std::uint8_t gray) {
    return PixelBuffer::create(1, 1, 4, std::vector<std::uint8_t>(4, gray));
}

ScriptedCamera::Device external() {
    return {.description = {.uniqueID = "external", .localizedName = "External camera"},
            .type = CaptureDeviceType::externalCamera,
            .position = CapturePosition::unspecified,
            .formats = {{.width = 320, .height = 240, .frameRates = {{5, 10}}},
                        {.width = 640, .height = 480, .frameRates = {{5, 20}}}}};
}

/// A view whose pictures are numbered by tenths of a second.
class ScriptedCameraTest : public testing::Test {
  protected:
    ManualTime time_;
    std::shared_ptr<ManualQueue> queue_ = std::make_shared<ManualQueue>();
    std::vector<int> seen_;
    std::vector<ScriptedCamera::Shot> shots_;
    std::function<void()> whileDelivering_;
    std::unique_ptr<ScriptedCamera> camera_;
    std::unique_ptr<CaptureInput> input_;

    void SetUp() override {
        camera_ = std::make_unique<ScriptedCamera>(
            std::vector{ScriptedCamera::builtInCamera(), external()}, time_, time_.start());
        camera_->addOutput({}, queue_, [this](const SampleBuffer& sample) {
            seen_.push_back(dynamic_cast<const PixelBuffer*>(sample.image.get())->bytes()[0]);
            if (whileDelivering_) whileDelivering_();
        });
        camera_->setView([this](const ScriptedCamera::Shot& shot) {
            shots_.push_back(shot);
            return onePixel(static_cast<std::uint8_t>(shot.at.time_since_epoch().count() * 10.01));
        });
    }
    void open(const std::string& id) {
        auto input = camera_->makeInput(id);
        ASSERT_TRUE(input.has_value()) << input.error();
        input_ = *std::move(input);
        ASSERT_TRUE(camera_->addInput(*input_));
    }
    /// The intervals between the steps taken; the queue is idle.
    std::vector<TimeInterval> play(int steps) {
        seen_.clear();
        std::vector<TimeInterval> pauses;
        for (int i = 0; i < steps; ++i) {
            pauses.push_back(time_.step());
            queue_->run();
            time_.time += pauses.back();
        }
        return pauses;
    }
};

TEST_F(ScriptedCameraTest, filmsTheViewAsItIsConfigured) {
    open("external");
    camera_->start();
    EXPECT_TRUE(camera_->isRunning());
    EXPECT_EQ(play(3), std::vector(3, TimeInterval(0.1)));
    EXPECT_EQ(seen_, (std::vector{0, 1, 2}));
    EXPECT_EQ(shots_.back().width, 320);
    EXPECT_NEAR(shots_.back().running.count(), 0.3, 1e-9) << "drawn one ahead";

    ASSERT_EQ(input_->formats().size(), 2U);
    ASSERT_TRUE(input_->lockForConfiguration());
    input_->setActiveFormat(1);
    input_->setFrameDuration({1, 5});
    input_->setActiveFormat(7);
    EXPECT_EQ(play(2), std::vector(2, TimeInterval(0.2)));
    EXPECT_EQ(seen_, (std::vector{3, 5}));
    EXPECT_EQ(shots_.back().height, 480);

    camera_->setView([](const ScriptedCamera::Shot&) { return onePixel(200); });
    play(2);
    EXPECT_EQ(seen_, (std::vector{200, 200})) << "also the one drawn ahead of the old view";
    camera_->setView({});
    play(1);
    EXPECT_EQ(seen_, std::vector{128});
    camera_->stop();
    EXPECT_FALSE(camera_->isRunning());
    EXPECT_FALSE(time_.step);
}

TEST_F(ScriptedCameraTest, discardsWhatTheQueueIsTooBusyForAndWhatComesAfterTheEnd) {
    open("external");
    camera_->start();
    time_.step();
    time_.step();
    EXPECT_EQ(queue_->waiting.size(), 1U);
    // A delivery in progress counts.
    whileDelivering_ = [this] { time_.step(); };
    queue_->run();
    EXPECT_EQ(camera_->counts(), (ScriptedCamera::Counts{.sent = 1, .discarded = 2}));

    whileDelivering_ = [this] { camera_->stop(); };
    time_.step();
    queue_->run();
    EXPECT_FALSE(time_.step);
    whileDelivering_ = {};
    camera_->start();
    camera_->start();
    time_.step();
    camera_->stop();
    camera_->start();
    seen_.clear();
    queue_->run();
    EXPECT_TRUE(seen_.empty()) << "a delivery of the run before";
    time_.step();
    camera_.reset();
    queue_->run();
    EXPECT_TRUE(seen_.empty()) << "a delivery of a camera that is gone";
}

TEST_F(ScriptedCameraTest, isSeveralDevicesOfWhichOneFilms) {
    constexpr std::array types{CaptureDeviceType::externalCamera,
                               CaptureDeviceType::builtInWideAngleCamera};
    EXPECT_EQ(camera_->discover(types).size(), 2U);
    EXPECT_EQ(camera_->discover(std::span(types).first(1)).at(0).uniqueID, "external");
    EXPECT_EQ(camera_->device("another"), std::nullopt);
    EXPECT_EQ(
        camera_->defaultDevice(CaptureDeviceType::builtInWideAngleCamera, CapturePosition::front)
            ->uniqueID,
        "rehearsal-camera");
    EXPECT_EQ(camera_->defaultDevice(CaptureDeviceType::externalCamera, CapturePosition::front),
              std::nullopt);

    EXPECT_FALSE(camera_->makeInput("another").has_value());
    open("external");
    EXPECT_FALSE(camera_->addInput(*input_)) << "there is an input already";
    camera_->start();
    camera_->removeInput(*input_);
    play(1);
    EXPECT_TRUE(seen_.empty());
}

/// A serial queue on a thread of its own.
class ThreadQueue final : public WorkQueue {
  public:
    ~ThreadQueue() override {
        async({});
        thread_.join();
    }
    void async(std::function<void()> work) override {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(work));
        changed_.notify_one();
    }

  private:
    void run() {
        while (true) {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return !waiting_.empty(); });
            const auto work = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();
            if (!work) return;
            work();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> waiting_;
    std::thread thread_{[this] { run(); }};
};

TEST(ScriptedCamera, runsOnItsOwnThreadUntilDestroyed) {
    const auto queue = std::make_shared<ThreadQueue>();
    const ManualTime clock;
    std::mutex mutex;
    std::condition_variable changed;
    int seen = 0;
    {
        ScriptedCamera::Device fast = external();
        fast.formats = {{.width = 2, .height = 2, .frameRates = {{1, 1000}}}};
        ScriptedCamera camera({fast}, clock);
        camera.addOutput({}, queue, [&](const SampleBuffer&) {
            const std::lock_guard lock(mutex);
            ++seen;
            changed.notify_one();
        });
        auto input = camera.makeInput("external");
        ASSERT_TRUE(input.has_value());
        ASSERT_TRUE(camera.addInput(**input));
        queue->async([&] { camera.start(); });
        std::unique_lock lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, std::chrono::minutes(1), [&] { return seen >= 5; }));
        lock.unlock();
    }
    // Destroyed: a sanitizer reports later access to the locals.
}

}  // namespace
}  // namespace marrowby
