// SPDX-License-Identifier: Apache-2.0

// Each step of a frame by itself, on one thread unless it says otherwise.

#include "Benchmarks/Material.h"
#include "Platforms/Linux/Camera/V4l2Converter.h"
#include "Platforms/Linux/Desktop/ThreadWorkQueues.h"
#include "Platforms/Linux/Vision/BitmapMat.h"
#include "Platforms/Linux/Vision/Landmarks98Model.h"
#include "Platforms/Linux/Vision/OpenCvFourierTransform.h"
#include "Platforms/Linux/Vision/YuNetFaceFinder.h"
#include "UnlockCore/Liveness/AntiSpoofCrop.h"
#include "UnlockCore/Liveness/DeviceBezelDetector.h"
#include "UnlockCore/Liveness/LandmarkGeometry.h"
#include "UnlockCore/Liveness/Planarity.h"
#include "UnlockCore/Liveness/ScreenCues.h"
#include "UnlockCore/Recognition/FaceAligner.h"
#include "UnlockCore/Recognition/FaceDetector.h"
#include "UnlockCore/Recognition/FaceMatcher.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>
#include <libyuv/convert_from_argb.h>
#include <opencv2/core.hpp>
#include <turbojpeg.h>

namespace marrowby {
namespace {

using benchmark::State;

std::vector<std::uint8_t> coded(const PixelBuffer& picture, std::uint32_t pixelFormat) {
    const int width = picture.width();
    const int height = picture.height();
    const std::uint8_t* pixels = picture.bytes().data();
    const int row = static_cast<int>(picture.bytesPerRow());
    const auto area = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<std::uint8_t> bytes(area * 2);
    if (pixelFormat == V4L2_PIX_FMT_YUYV) {
        libyuv::ARGBToYUY2(pixels, row, bytes.data(), width * 2, width, height);
    } else if (pixelFormat == V4L2_PIX_FMT_NV12) {
        libyuv::ARGBToNV12(pixels, row, bytes.data(), width, bytes.data() + area, width, width,
                           height);
    } else {
        const std::unique_ptr<void, int (*)(void*)> coder(tjInitCompress(), tjDestroy);
        unsigned char* jpeg = nullptr;
        unsigned long size = 0;
        tjCompress2(coder.get(), pixels, width, row, height, TJPF_BGRX, &jpeg, &size, TJSAMP_422,
                    90, 0);
        bytes.assign(jpeg, jpeg + size);
        tjFree(jpeg);
    }
    return bytes;
}

void convert(State& state, std::uint32_t pixelFormat) {
    const int width = static_cast<int>(state.range(0));
    const int height = static_cast<int>(state.range(1));
    const V4l2Layout layout{pixelFormat, width, height,
                            pixelFormat == V4L2_PIX_FMT_YUYV ? 2 * width : width};
    const auto bytes = coded(*Material::shared().picture(width, height), pixelFormat);
    V4l2Converter converter;
    for (auto _ : state) {
        const auto picture = converter.convert(layout, bytes);
        if (!picture) state.SkipWithError("not converted");
    }
}
void sizes(benchmark::internal::Benchmark* b) {
    b->Args({640, 480})->Args({1280, 720})->Unit(benchmark::kMillisecond);
}
BENCHMARK_CAPTURE(convert, yuyv, V4L2_PIX_FMT_YUYV)->Apply(sizes);
BENCHMARK_CAPTURE(convert, nv12, V4L2_PIX_FMT_NV12)->Apply(sizes);
BENCHMARK_CAPTURE(convert, mjpeg, V4L2_PIX_FMT_MJPEG)->Apply(sizes);

void workingImage(State& state) {
    const Material& material = Material::shared();
    const auto source =
        material.picture(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    const Size size = source->extent();
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            material.imaging.render(*source, {0, 0, size.width, size.height}, 640 / size.width));
    }
}
BENCHMARK(workingImage)->Apply(sizes);

void finder(State& state) {
    const Material& material = Material::shared();
    auto model = YuNetFaceFinder::load(material.models.folder / material.models.finderFile);
    const auto bgr = bgrMat(material.frame().image);
    for (auto _ : state) {
        if (model->find(*bgr)->size() != 1) state.SkipWithError("not one face");
    }
}
BENCHMARK(finder)->Unit(benchmark::kMillisecond)->UseRealTime();

/// The argument: both views of the face at once, on two threads.
void landmarks(State& state) {
    const Material& material = Material::shared();
    ThreadWorkQueues queues;
    const auto helper = state.range(0) > 1 ? queues.background() : nullptr;
    auto model = Landmarks98Model::load(material.models.folder / material.models.landmarksFile);
    const auto bgr = bgrMat(material.frame().image);
    const Rect box = material.face().boundingBox;
    for (auto _ : state)
        benchmark::DoNotOptimize(model->find(*bgr, box, helper.get()));
}
BENCHMARK(landmarks)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

/// Finder, landmarks, angles and quality.
void detect(State& state) {
    const Material& material = Material::shared();
    const auto vision = material.loadVision();
    const FaceDetector detector(*vision);
    const Bitmap image = material.frame().image;
    for (auto _ : state)
        benchmark::DoNotOptimize(detector.detect(image));
}
BENCHMARK(detect)->Unit(benchmark::kMillisecond)->UseRealTime();

void align(State& state) {
    const Material& material = Material::shared();
    const FaceAligner aligner(material.imaging);
    const DetectedFace face = material.face();
    const Bitmap image = material.frame().image;
    for (auto _ : state)
        benchmark::DoNotOptimize(aligner.align(face, image));
}
BENCHMARK(align)->Unit(benchmark::kMillisecond)->UseRealTime();

void embed(State& state) {
    Material& material = Material::shared();
    const auto embedder = material.loadEmbedder();
    const auto aligned =
        FaceAligner(material.imaging).align(material.face(), material.frame().image);
    for (auto _ : state) {
        if (!embedder->embed(aligned->image)) state.SkipWithError("no embedding");
    }
}
BENCHMARK(embed)->Unit(benchmark::kMillisecond)->UseRealTime();

/// With its crops.
void realFace(State& state) {
    Material& material = Material::shared();
    const auto model = material.loadRealFace();
    const CameraFrame frame = material.frame();
    const auto pixels = RGBPixels::view(frame.image);
    const Rect box = material.face().boundingBox;
    for (auto _ : state) {
        if (!model->score(*pixels, box)) state.SkipWithError("no score");
    }
}
BENCHMARK(realFace)->Unit(benchmark::kMillisecond)->UseRealTime();

void bothCrops(State& state) {
    const CameraFrame frame = Material::shared().frame();
    const auto pixels = RGBPixels::view(frame.image);
    const Rect box = Material::shared().face().boundingBox;
    for (auto _ : state) {
        for (const double scale : {2.7, 4.0}) {
            const auto crop = AntiSpoofCrop::around(box, 640, 480, scale);
            benchmark::DoNotOptimize(crop->resampled(*pixels));
        }
    }
}
BENCHMARK(bothCrops)->Unit(benchmark::kMicrosecond);

/// Glare and moire together, of a picture of the argument's side.
void screenCues(State& state) {
    const Material& material = Material::shared();
    const OpenCvFourierTransform fourier;
    const auto source = material.picture(1280, 720);
    const auto side = static_cast<double>(state.range(0));
    const auto image = material.imaging.render(*source, {416, 136, side, side}, 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(ScreenCues::measure(*image, material.imaging, fourier));
}
BENCHMARK(screenCues)->Arg(224)->Arg(448)->Unit(benchmark::kMicrosecond);

/// 98 landmarks of a turned plane, a tenth of them elsewhere.
void robustHomography(State& state) {
    constexpr Homography turn{0.97, 0.02, 8, -0.03, 1.01, -5, 1e-4, -5e-5, 1};
    std::vector<Point> from;
    std::vector<Point> to;
    for (int i = 0; i < 98; ++i) {
        from.push_back({200.0 + 13 * (i % 11), 120.0 + 17.0 * (i / 11)});
        to.push_back(turn.apply(from.back()));
        if (i % 10 == 0) to.back().x += 20;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(landmarkgeometry::robustFit(from, to));
}
BENCHMARK(robustHomography)->Unit(benchmark::kMicrosecond);

/// Flat motion over a whole window of frames.
void planarityOfAWindow(State& state) {
    const DetectedFace face = Material::shared().face();
    std::vector<LivenessFrame> frames;
    for (int i = 0; i < 90; ++i) {
        LivenessFrame frame = livenessFrame(face, Date(TimeInterval(i / 30.0)));
        for (LandmarkPoint& landmark : frame.landmarks)
            landmark.point.x += 3 * i;
        frames.push_back(std::move(frame));
    }
    const PlanarityTuning tuning = planarityTuning(LivenessMode::standard);
    for (auto _ : state)
        benchmark::DoNotOptimize(planarity::evaluate(frames, tuning));
}
BENCHMARK(planarityOfAWindow)->Unit(benchmark::kMicrosecond);

void deviceFrame(State& state) {
    const Material& material = Material::shared();
    const auto vision = material.loadVision();
    const Bitmap image = material.frame().image;
    const Rect box = material.face().boundingBox;
    for (auto _ : state)
        benchmark::DoNotOptimize(devicebezeldetector::detect(image, box, *vision));
}
BENCHMARK(deviceFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

/// 10 people of 18 samples.
void match(State& state) {
    const auto identities = Material::shared().identities(10);
    const Embedding probe = identities[7].samples[3].embedding;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            facematcher::bestMatch(probe, identities, identities[0].modelIdentifier, 0.5F));
    }
}
BENCHMARK(match)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace marrowby
