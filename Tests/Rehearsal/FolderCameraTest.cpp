#include "Rehearsal/FolderCamera.h"
#include "Tests/Rehearsal/SequenceOnDisk.h"

#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Scene = FolderCamera::Scene;

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

/// The test is the clock: it takes the steps of the one pacing that is running.
struct ManualTime {
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

    std::function<TimeInterval()> step;

    StartPacing start() {
        return [this](std::function<TimeInterval()> each) {
            return std::make_unique<Running>(*this, std::move(each));
        };
    }
};

/// The camera on a capture queue; every delivered picture is noted as the character of its gray,
/// the empty room as a dot.
class FolderCameraTest : public testing::Test {
  protected:
    ManualTime time_;
    std::shared_ptr<ManualQueue> queue_ = std::make_shared<ManualQueue>();
    std::string seen_;
    std::vector<std::string> complaints_;
    std::function<void()> whileDelivering_;
    std::unique_ptr<FolderCamera> camera_;
    std::unique_ptr<CaptureInput> input_;

    void SetUp() override {
        camera_ = std::make_unique<FolderCamera>(
            time_.start(),
            [this](const std::string& sentence) { complaints_.push_back(sentence); });
        camera_->addOutput({}, queue_, [this](const SampleBuffer& sample) {
            const auto* picture = dynamic_cast<const PixelBuffer*>(sample.image.get());
            const auto gray = static_cast<char>(picture->bytes()[0]);
            seen_ += gray == static_cast<char>(128) ? '.' : gray;
            if (whileDelivering_) whileDelivering_();
        });
        auto input = camera_->makeInput(FolderCamera::uniqueID);
        ASSERT_TRUE(input.has_value());
        input_ = std::move(*input);
        ASSERT_TRUE(camera_->addInput(*input_));
    }

    static std::shared_ptr<const FrameFolder> load(const SequenceOnDisk& disk) {
        auto folder = FrameFolder::load(disk.path());
        EXPECT_TRUE(folder.has_value());
        return folder ? std::make_shared<const FrameFolder>(std::move(*folder)) : nullptr;
    }
    /// What is delivered meanwhile, the queue being idle.
    std::string play(int frames) {
        seen_.clear();
        for (int i = 0; i < frames; ++i) {
            time_.step();
            queue_->run();
        }
        return seen_;
    }
};

TEST_F(FolderCameraTest, playsWhateverIsInFront) {
    const SequenceOnDisk disk;
    disk.fill("ABC", 20);
    const SequenceOnDisk other;
    other.fill("XY", 20);
    camera_->start();
    EXPECT_TRUE(camera_->isRunning());
    EXPECT_EQ(play(2), "..");
    camera_->setScene({.sequence = load(disk)});
    EXPECT_EQ(play(5), "ABCAB");
    camera_->setScene({.sequence = load(other), .atEnd = Scene::AtEnd::holdLastFrame});
    EXPECT_EQ(play(4), "XYYY");
    camera_->setScene({});
    EXPECT_EQ(play(1), ".");
    EXPECT_EQ(time_.step(), TimeInterval(0.05));
    EXPECT_EQ(camera_->counts(), (FolderCamera::Counts{.sent = 13}));
    EXPECT_TRUE(complaints_.empty());
}

TEST_F(FolderCameraTest, beginsAgainOrGoesOnWithEveryRun) {
    const SequenceOnDisk disk;
    disk.fill("ABCD");
    const auto folder = load(disk);
    for (const bool continues : {false, true}) {
        camera_->setScene({.sequence = folder, .continues = continues});
        camera_->start();
        EXPECT_EQ(play(2), "AB");
        camera_->start();
        EXPECT_EQ(play(1), "C") << "starting twice is starting once";
        camera_->stop();
        camera_->start();
        EXPECT_EQ(play(2), continues ? "DA" : "AB");
        camera_->stop();
    }
}

TEST_F(FolderCameraTest, discardsWhatTheQueueIsTooBusyFor) {
    const SequenceOnDisk disk;
    disk.fill("ABCDE");
    camera_->setScene({.sequence = load(disk)});
    camera_->start();
    time_.step();
    time_.step();
    EXPECT_EQ(queue_->waiting.size(), 1U);
    // A delivery in progress is not over.
    whileDelivering_ = [&] { time_.step(); };
    queue_->run();
    EXPECT_EQ(seen_, "A");
    whileDelivering_ = {};
    EXPECT_EQ(play(2), "DE");
    EXPECT_EQ(camera_->counts(), (FolderCamera::Counts{.sent = 3, .late = 2}));

    camera_->addOutput({.discardsLateFrames = false}, queue_, [](const SampleBuffer&) {});
    time_.step();
    time_.step();
    EXPECT_EQ(queue_->waiting.size(), 2U);
}

TEST_F(FolderCameraTest, stopsBetweenTwoDeliveries) {
    camera_->start();
    time_.step();
    camera_->stop();
    EXPECT_FALSE(camera_->isRunning());
    EXPECT_FALSE(time_.step);
    camera_->stop();
    camera_->start();
    queue_->run();
    EXPECT_EQ(seen_, "") << "a delivery of the run before";
    whileDelivering_ = [&] { camera_->stop(); };
    EXPECT_EQ(play(1), ".");
    EXPECT_FALSE(time_.step);

    whileDelivering_ = {};
    camera_->start();
    time_.step();
    camera_.reset();
    EXPECT_FALSE(time_.step);
    queue_->run();
    EXPECT_EQ(seen_, ".") << "a delivery of a camera that is gone";
}

TEST_F(FolderCameraTest, leavesOutUnreadablePictures) {
    const SequenceOnDisk disk;
    disk.fill("ABCD");
    camera_->setScene({.sequence = load(disk), .atEnd = Scene::AtEnd::holdLastFrame});
    disk.write("0001.jpg", "not a picture");
    std::filesystem::remove(disk.path() / "0003.jpg");
    camera_->start();
    EXPECT_EQ(play(6), "ACCC");
    EXPECT_EQ(camera_->counts(), (FolderCamera::Counts{.sent = 4, .unreadable = 2}));
    ASSERT_EQ(complaints_.size(), 2U);
    EXPECT_NE(complaints_[0].find("“0001.jpg”"), std::string::npos) << complaints_[0];
    EXPECT_NE(complaints_[1].find("“0003.jpg”"), std::string::npos) << complaints_[1];
}

TEST_F(FolderCameraTest, isOneDeviceThatCanBeRefused) {
    constexpr std::array anyType{CaptureDeviceType::externalCamera,
                                 CaptureDeviceType::builtInWideAngleCamera};
    const SequenceOnDisk disk;
    disk.fill("A", 20);
    camera_->setScene({.sequence = load(disk)});
    const CaptureDeviceDescription device{"rehearsal-camera", "Rehearsal camera"};
    EXPECT_EQ(camera_->discover(anyType), std::vector{device});
    EXPECT_TRUE(camera_->discover(std::span(anyType).first(1)).empty());
    EXPECT_EQ(camera_->device("rehearsal-camera"), device);
    EXPECT_EQ(camera_->device("another"), std::nullopt);
    EXPECT_EQ(
        camera_->defaultDevice(CaptureDeviceType::builtInWideAngleCamera, CapturePosition::front),
        device);
    const auto formats = input_->formats();
    ASSERT_EQ(formats.size(), 1U);
    EXPECT_EQ(formats[0].width, 2);
    EXPECT_EQ(formats[0].height, 1);
    EXPECT_EQ(formats[0].frameRates.at(0).maximum, 20);

    camera_->setAuthorization(CaptureAuthorization::denied);
    std::optional<bool> answer;
    camera_->requestAccess([&](bool isGranted) { answer = isGranted; });
    EXPECT_EQ(answer, false);
    EXPECT_EQ(camera_->authorization(), CaptureAuthorization::denied);
    camera_->setAuthorization(CaptureAuthorization::notDetermined);
    camera_->requestAccess([&](bool isGranted) { answer = isGranted; });
    EXPECT_EQ(answer, true);
    EXPECT_EQ(camera_->authorization(), CaptureAuthorization::authorized);

    camera_->setBusy("In use by another program.");
    EXPECT_EQ(camera_->makeInput("rehearsal-camera").error(), "In use by another program.");
    camera_->setBusy(std::nullopt);
    const auto second = camera_->makeInput("rehearsal-camera");
    ASSERT_TRUE(second.has_value());
    EXPECT_FALSE(camera_->addInput(**second)) << "there is an input already";

    // An unplugged camera, and one that was taken out of the session, stop delivering.
    camera_->start();
    EXPECT_EQ(play(1), "A");
    camera_->setPlugged(false);
    EXPECT_EQ(play(1), "");
    EXPECT_EQ(camera_->defaultDevice(), std::nullopt);
    EXPECT_TRUE(camera_->discover(anyType).empty());
    EXPECT_FALSE(camera_->makeInput("rehearsal-camera").has_value());
    camera_->setPlugged(true);
    camera_->removeInput(*input_);
    EXPECT_EQ(play(1), "");
    EXPECT_TRUE(camera_->addInput(**second));
    EXPECT_EQ(play(1), "A");
    camera_->removeInput(**second);
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

TEST(FolderCamera, runsOnItsOwnThreadUntilItIsGone) {
    const SequenceOnDisk disk;
    disk.fill("AB", 1000);
    auto folder = FrameFolder::load(disk.path());
    ASSERT_TRUE(folder.has_value());
    const auto queue = std::make_shared<ThreadQueue>();
    for (const bool stopsFirst : {false, true}) {
        std::mutex mutex;
        std::condition_variable changed;
        std::string seen;
        {
            FolderCamera camera;
            camera.setScene({.sequence = std::make_shared<const FrameFolder>(*folder)});
            camera.addOutput({}, queue, [&](const SampleBuffer& sample) {
                const std::lock_guard lock(mutex);
                seen += static_cast<char>(
                    dynamic_cast<const PixelBuffer*>(sample.image.get())->bytes()[0]);
                changed.notify_one();
            });
            auto input = camera.makeInput(FolderCamera::uniqueID);
            ASSERT_TRUE(input.has_value());
            ASSERT_TRUE(camera.addInput(**input));
            queue->async([&] { camera.start(); });
            std::unique_lock lock(mutex);
            ASSERT_TRUE(
                changed.wait_for(lock, std::chrono::minutes(1), [&] { return seen.size() >= 5; }));
            if (stopsFirst) {
                queue->async([&] {
                    camera.stop();
                    const std::lock_guard inner(mutex);
                    seen.clear();
                    changed.notify_one();
                });
                ASSERT_TRUE(
                    changed.wait_for(lock, std::chrono::minutes(1), [&] { return seen.empty(); }));
            }
        }
        // Nothing touches the locals from here on; the sanitizers would tell.
        EXPECT_EQ(seen.empty(), stopsFirst);
    }
}

}  // namespace
}  // namespace marrowby
