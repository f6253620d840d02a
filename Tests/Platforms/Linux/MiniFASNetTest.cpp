#include "Platforms/Linux/ImageFiles.h"
#include "Platforms/Linux/OpenCvFaceVision.h"
#include "Platforms/Linux/OpenCvImaging.h"
#include "Platforms/Linux/OpenCvNeuralModels.h"
#include "Tests/Fakes/SharedFolder.h"
#include "UnlockCore/Liveness/LivenessAnalyzer.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/Recognition/FaceDetector.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace marrowby {
namespace {

/// Hands every network to OpenCV with the channels the wrong way round.
class RedFirst final : public NeuralModels {
  public:
    [[nodiscard]] std::expected<std::unique_ptr<NeuralModel>, std::string> load(
        const std::filesystem::path& file, const Options& options) override {
        return real_.load(
            file, {.computeUnits = options.computeUnits, .channelOrder = ChannelOrder::rgb});
    }

  private:
    OpenCvNeuralModels real_;
};

class MiniFASNetFile : public testing::Test {
  protected:
    void SetUp() override {
        const auto shared = sharedFolder();
        if (!shared) GTEST_SKIP() << noSharedFolder;
        shared_ = *shared;
    }

    auto load(NeuralModels& models) const {
        return MiniFASNet::load(shared_ / "models", models, NeuralModels::ComputeUnits::all,
                                "MiniFASNet.onnx");
    }

    /// The scores of every third frame of a sequence.
    std::vector<AntiSpoofScore> scores(AntiSpoofScoring& model, const std::string& sequence) const {
        auto vision =
            OpenCvFaceVision::load(shared_ / "models" / "face_detection_yunet_2023mar.onnx",
                                   shared_ / "models" / "Landmarks98.onnx");
        const FaceDetector detector(**vision);
        const OpenCvImaging imaging;
        std::vector<AntiSpoofScore> result;
        for (int i = 0; i < 36; i += 3) {
            const std::string number = std::to_string(i);
            const auto picture =
                readPicture(shared_ / "media" / sequence /
                            (std::string(4 - number.size(), '0') + number + ".jpg"));
            const Size size = picture.value()->extent();
            const auto image = imaging.render(**picture, {0, 0, size.width, size.height}, 1);
            const auto faces = detector.detect(image.value());
            result.push_back(
                model.score(RGBPixels::view(*image).value(), faces.value().at(0).boundingBox)
                    .value());
        }
        return result;
    }

    /// What the lock screen's liveness makes of a sequence, played over and over for two seconds.
    static LivenessDecision decision(const std::vector<AntiSpoofScore>& scores, LivenessMode mode) {
        LivenessAnalyzer analyzer(mode, livenessTuning(mode), planarityTuning(mode),
                                  {LivenessCue::realFace}, TimeInterval(3));
        LivenessFrame frame;
        for (std::size_t i = 0; i < 30; ++i) {
            frame.timestamp += TimeInterval(0.1);
            frame.antiSpoof = scores[i % scores.size()];
            analyzer.ingest(frame, UUID());
        }
        return analyzer.lastSnapshot().decision;
    }

    std::filesystem::path shared_;
};

/// A picture whose channels, blue first, follow a formula.
Bitmap pattern(bool upsideDown) {
    std::vector<std::uint8_t> bytes;
    for (int row = 0; row < 80; ++row) {
        const int y = upsideDown ? 79 - row : row;
        for (int x = 0; x < 80; ++x) {
            for (int c = 0; c < 3; ++c) {
                const int value = (c * 79 + y * 31 + x * 17 + ((x * y) % 29) * 3) % 256;
                bytes.push_back(static_cast<std::uint8_t>(value));
            }
            bytes.push_back(255);
        }
    }
    return Bitmap::create(80, 80, 320, bgrx8, std::move(bytes)).value();
}

TEST_F(MiniFASNetFile, givesItsReferenceOutputsForBlueFirstPictures) {
    std::ifstream file(shared_ / "models" / "reference-outputs.json");
    const auto reference = nlohmann::json::parse(file).at("MiniFASNet");
    const std::array inputs{NeuralInput{"crop27", pattern(false)},
                            NeuralInput{"crop40", pattern(true)}};
    const auto largestDifference = [&](NeuralModels::ChannelOrder order) {
        OpenCvNeuralModels models;
        const auto model =
            models.load(shared_ / "models" / "MiniFASNet.onnx", {.channelOrder = order});
        float largest = 0;
        const auto outputs = model.value()->predict(inputs).value();
        for (const NeuralOutput& output : outputs) {
            const auto expected = reference.at(output.name).get<std::vector<float>>();
            EXPECT_EQ(output.values.size(), expected.size());
            for (std::size_t i = 0; i < expected.size(); ++i) {
                largest = std::max(largest, std::abs(output.values.at(i) - expected[i]));
            }
        }
        return largest;
    };
    EXPECT_LT(largestDifference(NeuralModels::ChannelOrder::bgr), 1e-4F);
    EXPECT_GT(largestDifference(NeuralModels::ChannelOrder::rgb), 0.01F);
}

TEST_F(MiniFASNetFile, tellsPeopleFromAPhone) {
    OpenCvNeuralModels models;
    const auto model = load(models);
    ASSERT_TRUE(model) << description(model.error());
    for (const char* person : {"owner-look", "stranger-look"}) {
        const auto seen = scores(**model, person);
        for (const AntiSpoofScore& score : seen) {
            EXPECT_GT(score.live, 0.7F) << person;
            EXPECT_NEAR(score.live, (score.live27 + score.live40) / 2, 1e-4F);
        }
        for (const LivenessMode mode : {LivenessMode::standard, LivenessMode::strict}) {
            EXPECT_EQ(decision(seen, mode), LivenessDecision(LivenessDecision::Confirmed{}));
        }
    }
    const auto phone = scores(**model, "phone-photo-look");
    for (const AntiSpoofScore& score : phone)
        EXPECT_LT(score.live, 0.05F);
    for (const LivenessMode mode : {LivenessMode::standard, LivenessMode::strict}) {
        EXPECT_EQ(decision(phone, mode),
                  LivenessDecision(LivenessDecision::Denied{LivenessCue::realFace}));
    }
}

TEST_F(MiniFASNetFile, takesPeopleForLessLiveWithTheChannelsSwapped) {
    OpenCvNeuralModels models;
    RedFirst swapped;
    const auto right = scores(**load(models), "stranger-look");
    const auto wrong = scores(**load(swapped), "stranger-look");
    for (std::size_t i = 0; i < right.size(); ++i) {
        EXPECT_GT(right[i].live, wrong[i].live + 0.2F);
    }
}

}  // namespace
}  // namespace marrowby
