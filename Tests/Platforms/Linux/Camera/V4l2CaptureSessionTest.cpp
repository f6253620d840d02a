// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Camera/PixelBuffer.h"
#include "Platforms/Linux/Camera/V4l2CaptureSession.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeWorkQueues.h"
#include "Tests/Platforms/Linux/Camera/FakeV4l2.h"
#include "Unlock/Linux/LinuxWords.h"
#include "UnlockCore/Recognition/CameraManager.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <linux/videodev2.h>
#include <turbojpeg.h>

namespace marrowby {
namespace {

using Picture = FakeV4l2::Picture;
using Bytes = std::vector<std::uint8_t>;

constexpr int width = 64;
constexpr int height = 48;
constexpr std::uint32_t yuyv = V4L2_PIX_FMT_YUYV;
constexpr std::uint32_t nv12 = V4L2_PIX_FMT_NV12;
constexpr std::uint32_t mjpeg = V4L2_PIX_FMT_MJPEG;

FakeV4l2::Camera webcam(std::uint32_t pixelFormat = yuyv) {
    return {.codings = {{pixelFormat, {{width, height, {30, 15}}}}}};
}

Bytes plainJpeg(int pictureWidth = width) {
    // Stripes, so that a missing part shows.
    Bytes pixels;
    for (int i = 0; i < pictureWidth * height; ++i) {
        const bool isDark = i / 3 % 2 == 0;
        for (const int value : {isDark ? 60 : 200, 120, isDark ? 90 : 40})
            pixels.push_back(static_cast<std::uint8_t>(value));
    }
    const std::unique_ptr<void, int (*)(void*)> coder(tjInitCompress(), tjDestroy);
    unsigned char* out = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(tjCompress2(coder.get(), pixels.data(), pictureWidth, 0, height, TJPF_RGB, &out,
                          &size, TJSAMP_422, 90, 0),
              0);
    Bytes jpeg(out, out + size);
    tjFree(out);
    return jpeg;
}

/// A frame of one colour, by BT.601.
Picture plain(std::uint32_t pixelFormat, std::uint8_t y, std::uint8_t u = 128,
              std::uint8_t v = 128) {
    Bytes bytes;
    constexpr int pairs = width * height / 2;
    if (pixelFormat == nv12) bytes.assign(std::size_t{width} * height, y);
    for (int i = 0; i < (pixelFormat == nv12 ? pairs / 2 : pairs); ++i) {
        for (const std::uint8_t value : pixelFormat == nv12 ? Bytes{u, v} : Bytes{y, u, y, v})
            bytes.push_back(value);
    }
    return {bytes};
}

class V4l2CaptureSessionTest : public testing::Test {
  protected:
    void TearDown() override {
        camera_.reset();
        queues.runAll();
        EXPECT_TRUE(system->violations.empty()) << system->violations.front();
        for (const auto& camera : system->cameras)
            EXPECT_EQ(camera.openFiles, 0);
        EXPECT_EQ(system->mappedBuffers, 0);
    }

    CameraManager& manager() {
        if (!camera_) {
            camera_.emplace(std::make_shared<V4l2CaptureSession>(system),
                            CameraManager::Services{.queues = queues,
                                                    .mainThread = mainThread,
                                                    .clock = mainThread,
                                                    .imaging = imaging,
                                                    .registry = registry},
                            640);
            camera_->setOnFrame([this](const CameraFrame& frame) { frames.push_back(frame); });
        }
        return *camera_;
    }
    /// The centre pixel of a frame, as BGR.
    static std::array<int, 3> colour(const CameraFrame& frame) {
        const auto& source = dynamic_cast<const PixelBuffer&>(*frame.source);
        const std::size_t offset = height / 2 * source.bytesPerRow() + std::size_t{width} / 2 * 4;
        return {source.bytes()[offset], source.bytes()[offset + 1], source.bytes()[offset + 2]};
    }
    FakeV4l2::Camera& device() { return system->cameras.front(); }
    void run(int steps) {
        while (steps-- > 0)
            (void)queues.runOne();
    }

    std::shared_ptr<FakeV4l2> system = std::make_shared<FakeV4l2>();
    V4l2CaptureSession session{system};
    FakeWorkQueues queues;
    FakeMainThread mainThread;
    OpenCvImaging imaging;
    CameraUseRegistry registry;
    std::vector<CameraFrame> frames;

  private:
    std::optional<CameraManager> camera_;
};

TEST_F(V4l2CaptureSessionTest, findsUsableCameras) {
    system->cameras = {
        // One camera has two nodes, one for frames and one for metadata.
        {.node = "/dev/video0", .card = "Inside", .codings = {{mjpeg, {{width, height, {30}}}}}},
        {.node = "/dev/video1",
         .card = "Inside",
         .capabilities = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING},
        {.node = "/dev/video2",
         .card = "Inside: infrared",
         .codings = {{V4L2_PIX_FMT_GREY, {{width, height, {30}}}}}},
        {.node = "/dev/video3",
         .card = "Encoder",
         .capabilities = V4L2_CAP_VIDEO_M2M | V4L2_CAP_STREAMING},
        {.node = "/dev/video4",
         .card = "Somebody’s",
         .codings = {{yuyv, {{width, height, {30}}}}},
         .isAllowed = false},
        {.node = "/dev/video5",
         .card = "Inside",
         .bus = "usb-2",
         .codings = {{nv12, {{width, height, {30}}}}}},
    };
    const auto found = session.discover(std::array{CaptureDeviceType::externalCamera});
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].localizedName, "Inside");
    EXPECT_EQ(session.defaultDevice(), found[0]);
    EXPECT_EQ(session.device(found[1].uniqueID), found[1]);
    EXPECT_EQ(session.device("usb-9/Inside"), std::nullopt);
    EXPECT_TRUE(session.discover(std::array{CaptureDeviceType::continuityCamera}).empty());
}

TEST_F(V4l2CaptureSessionTest, opensNoCameraToListTheSameNodesAgain) {
    system->cameras = {webcam(), webcam()};
    system->cameras[1].node = "/dev/video1";
    system->cameras[1].card = "Second";
    const auto listed = [&] { return CameraManager::availableCameras(session).size(); };
    const auto openings = [&] { return system->cameras[0].openings + system->cameras[1].openings; };
    EXPECT_EQ(listed(), 2U);
    const int atFirst = openings();
    EXPECT_EQ(listed(), 2U);
    const std::string second =
        session.discover(std::array{CaptureDeviceType::externalCamera}).back().uniqueID;
    EXPECT_TRUE(session.device(second));
    EXPECT_EQ(openings(), atFirst);
    const int atFirstOfFirst = system->cameras[0].openings;
    EXPECT_TRUE(session.makeInput(second));
    EXPECT_EQ(system->cameras[0].openings, atFirstOfFirst);

    system->cameras[1].isPlugged = false;
    EXPECT_EQ(listed(), 1U);
    system->cameras[1].isPlugged = true;
    EXPECT_EQ(listed(), 2U);
    device().isAllowed = false;
    ++device().changes;
    EXPECT_EQ(listed(), 1U);
    device().isAllowed = true;
    ++device().changes;
    device().card = "Another";
    EXPECT_EQ(CameraManager::availableCameras(session).front().name, "Another");

    ++device().changes;
    device().faults[VIDIOC_QUERYCAP] = EIO;
    EXPECT_EQ(listed(), 1U);
    device().faults.clear();
    EXPECT_EQ(listed(), 2U) << "a camera that did not answer is asked again";
}

TEST_F(V4l2CaptureSessionTest, listsSizesAndRates) {
    system->cameras = {
        {.codings = {{mjpeg, {{1280, 720, {30}}}},
                     {yuyv, {{640, 480, {30, 15}}, {1280, 720, {10}}}}}},
        {.node = "/dev/video1",
         .bus = "usb-2",
         .codings = {{nv12, {{320, 240, {5}}, {1280, 720, {5, 60}}}, true}}},
        {.node = "/dev/video2", .bus = "scaler", .codings = {{nv12, {{16, 16}, {64, 48}}, true}}},
        {.node = "/dev/video3",
         .bus = "hdmi",
         .codings = {FakeV4l2::Coding{.pixelFormat = yuyv, .sizes = {}}},
         .width = 800,
         .height = 600}};
    const auto described = [&](const char* id) {
        const auto input = session.makeInput(id);
        std::string text;
        if (!input) return input.error();
        for (const auto& [w, h, rates] : input.value()->formats()) {
            text += std::to_string(w) + "x" + std::to_string(h);
            for (const auto& [least, most] : rates)
                text += " " + std::to_string(std::lround(least)) + "-" +
                        std::to_string(std::lround(most));
            text += ", ";
        }
        return text;
    };
    EXPECT_EQ(described("usb-1/Webcam"), "640x480 30-30 15-15, 1280x720 10-10, 1280x720 30-30, ")
        << "uncompressed formats first";
    EXPECT_EQ(described("usb-2/Webcam"), "320x240 5-60, 640x480 5-60, 1280x720 5-60, ");
    EXPECT_EQ(described("scaler/Webcam"), "64x48 24-24, ")
        << "the largest size, at the source's rate";
    EXPECT_EQ(described("hdmi/Webcam"), "800x600 24-24, ") << "the source's own size";
}

TEST_F(V4l2CaptureSessionTest, setsTheChosenFormat) {
    system->cameras = {{.codings = {{yuyv, {{640, 480, {30}}, {1280, 720, {10}}}},
                                    {mjpeg, {{1280, 720, {60, 30}}, {1920, 1080, {30}}}}}}};
    ASSERT_TRUE(manager().start(std::nullopt));
    run(1);
    EXPECT_TRUE(device().isStreaming);
    EXPECT_EQ(device().pixelFormat, mjpeg);
    EXPECT_EQ(device().width, 1280U);
    EXPECT_EQ(device().interval, 30U);
}

TEST_F(V4l2CaptureSessionTest, convertsTheColoursOfEveryFormat) {
    struct Case {
        std::uint32_t pixelFormat;
        Picture picture;
        std::array<int, 3> bgr;
    };
    const std::vector<Case> cases{{yuyv, plain(yuyv, 16), {0, 0, 0}},
                                  {yuyv, plain(yuyv, 235), {255, 255, 255}},
                                  {yuyv, plain(yuyv, 81, 90, 240), {0, 0, 255}},
                                  {nv12, plain(nv12, 145, 54, 34), {0, 255, 0}},
                                  {nv12, plain(nv12, 41, 240, 110), {255, 0, 0}}};
    for (const Case& c : cases) {
        system->cameras = {webcam(c.pixelFormat)};
        frames.clear();
        ASSERT_TRUE(manager().start(std::nullopt));
        run(1);
        device().pictures = {c.picture};
        run(1);
        ASSERT_EQ(frames.size(), 1U);
        for (std::size_t channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(colour(frames[0]).at(channel), c.bgr.at(channel), 3);
        TearDown();
    }
}

TEST_F(V4l2CaptureSessionTest, deliversOnlyTheNewestFrame) {
    system->cameras = {webcam()};
    ASSERT_TRUE(manager().start(std::nullopt));
    run(3);
    EXPECT_TRUE(frames.empty()) << "too early for a frame";
    // Dark at first, while the exposure settles.
    for (const std::uint8_t grey : Bytes{16, 60, 100, 180})
        device().pictures.push_back(plain(yuyv, grey));
    run(2);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_NEAR(colour(frames[0])[0], (180 - 16) * 255.0 / 219, 2);

    // A delivered frame stays unchanged while others arrive.
    for (int i = 0; i < 9; ++i) {
        device().pictures = {plain(yuyv, 30)};
        run(1);
    }
    EXPECT_EQ(frames.size(), 10U);
    EXPECT_NEAR(colour(frames[0])[0], (180 - 16) * 255.0 / 219, 2);

    manager().stop();
    device().pictures = {plain(yuyv, 30)};
    queues.runAll();
    EXPECT_EQ(frames.size(), 10U);
    EXPECT_EQ(device().openFiles, 0) << "closed while stopped";
}

TEST_F(V4l2CaptureSessionTest, dropsDamagedFrames) {
    const Bytes whole = plainJpeg();
    const auto changed = [&](const std::function<void(Bytes&)>& change) {
        Bytes bytes = whole;
        change(bytes);
        return Picture{bytes};
    };
    struct Case {
        const char* what;
        std::uint32_t pixelFormat;
        Picture picture;
        bool isShown;
    };
    const auto half = static_cast<std::ptrdiff_t>(whole.size() / 2);
    const std::vector<Case> cases{
        {"whole", mjpeg, {whole}, true},
        {"padded", mjpeg, changed([](Bytes& b) { b.resize(b.size() + 100); }), true},
        {"a few bytes too many before the end", mjpeg,
         changed([](Bytes& b) { b.insert(b.end() - 2, 3, 0x55); }), true},
        {"cut short", mjpeg, changed([&](Bytes& b) { b.resize(b.size() / 2); }), false},
        {"without its middle", mjpeg,
         changed([&](Bytes& b) { b.erase(b.begin() + half, b.begin() + half + 300); }), false},
        {"no picture", mjpeg, {Bytes(500, 0x41)}, false},
        {"empty", mjpeg, {}, false},
        {"of another size", mjpeg, {plainJpeg(32)}, false},
        {"marked by the driver", mjpeg, {whole, true}, false},
        {"whole", yuyv, plain(yuyv, 50), true},
        {"cut short", yuyv, {Bytes(width * height * 2 - 1)}, false},
        {"cut short", nv12, {Bytes(width * height * 3 / 2 - 1)}, false},
    };
    for (const Case& c : cases) {
        system->cameras = {webcam(c.pixelFormat)};
        frames.clear();
        ASSERT_TRUE(manager().start(std::nullopt));
        run(1);
        device().pictures = {c.picture};
        run(1);
        EXPECT_EQ(frames.size(), c.isShown ? 1U : 0U) << c.what;
        EXPECT_TRUE(device().isStreaming) << c.what << ": the next frame may be intact";
        TearDown();
    }
}

TEST_F(V4l2CaptureSessionTest, saysWhyItCannotStart) {
    struct Case {
        std::function<void(FakeV4l2&)> fault;
        const char* sentence;
    };
    const std::vector<Case> cases{
        {[](FakeV4l2& s) { s.cameras.clear(); }, "No camera found."},
        {[](FakeV4l2& s) { s.cameras[0].isAllowed = false; },
         "Marrowby Unlock isn’t allowed to use the camera. Add your account to the group “video”, "
         "then log in again."},
        {[](FakeV4l2& s) { s.cameras[0].isTaken = true; },
         "The camera couldn’t be opened: another program is using it."},
        {[](FakeV4l2& s) { s.cameras[0].faults[VIDIOC_REQBUFS] = ENODEV; },
         "The camera couldn’t be opened: it isn’t connected any more."},
    };
    for (const Case& c : cases) {
        system->cameras = {webcam()};
        c.fault(*system);
        const auto started = manager().start(std::nullopt);
        ASSERT_FALSE(started) << c.sentence;
        EXPECT_EQ(description(started.error(), linuxWords), c.sentence);
        TearDown();
    }
}

TEST_F(V4l2CaptureSessionTest, endsWhenTheCameraIsLostAndFindsItAtAnotherNode) {
    const std::vector<std::function<void(FakeV4l2::Camera&)>> losses{
        [](auto& camera) { camera.isPlugged = false; },
        [](auto& camera) { camera.pollsError = true; },
        [](auto& camera) {
            camera.pictures = {plain(yuyv, 30)};
            camera.faults[VIDIOC_DQBUF] = ENODEV;
        },
        [](auto& camera) {
            camera.pictures = {plain(yuyv, 30)};
            camera.faults[VIDIOC_QBUF] = EIO;
        },
    };
    for (const auto& lose : losses) {
        system->cameras = {webcam()};
        ASSERT_TRUE(manager().start(std::nullopt));
        run(2);
        frames.clear();
        lose(device());
        queues.runAll();
        EXPECT_FALSE(device().isPlugged && device().isStreaming);
        EXPECT_EQ(device().openFiles, 0);

        // Plugged in again, with another node number.
        FakeV4l2::Camera again = webcam();
        again.node = "/dev/video7";
        system->cameras.push_back(again);
        device().isPlugged = false;
        ASSERT_TRUE(manager().start(std::nullopt));
        system->cameras.back().pictures = {plain(yuyv, 90)};
        frames.clear();
        run(2);
        EXPECT_EQ(frames.size(), 1U);
        TearDown();
    }
}

TEST_F(V4l2CaptureSessionTest, waitsForABusyCamera) {
    system->cameras = {webcam()};
    ASSERT_TRUE(manager().start(std::nullopt));
    device().isTaken = true;
    run(4);
    EXPECT_FALSE(device().isStreaming);
    EXPECT_GT(system->plainWaits, 0);
    device().isTaken = false;
    device().pictures = {plain(yuyv, 30)};
    run(2);
    EXPECT_EQ(frames.size(), 1U);

    // A lost frame is not a lost camera.
    device().pictures = {plain(yuyv, 30)};
    device().faults[VIDIOC_DQBUF] = EIO;
    run(1);
    device().faults.clear();
    run(1);
    EXPECT_EQ(frames.size(), 2U);
}

TEST_F(V4l2CaptureSessionTest, changesCamerasWhileRunning) {
    system->cameras = {webcam(), webcam()};
    system->cameras[1].node = "/dev/video1";
    system->cameras[1].bus = "usb-2";
    ASSERT_TRUE(manager().start("usb-1/Webcam"));
    run(2);
    EXPECT_TRUE(system->cameras[0].isStreaming);
    ASSERT_TRUE(manager().start("usb-2/Webcam"));
    run(3);
    EXPECT_FALSE(system->cameras[0].isStreaming);
    EXPECT_TRUE(system->cameras[1].isStreaming);
    // Stop and start at once: one run, not two.
    manager().stop();
    ASSERT_TRUE(manager().start("usb-2/Webcam"));
    run(6);
    system->cameras[1].pictures = {plain(yuyv, 30)};
    run(1);
    EXPECT_EQ(frames.size(), 1U);
}

}  // namespace
}  // namespace marrowby
