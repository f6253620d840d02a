// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeWindowServer.h"
#include "Unlock/Model/TryOut.h"
#include "Unlock/Pages/TryPage.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace marrowby {
namespace {

using testing::ElementsAre;

Bitmap picture() {
    return *Bitmap::create(2, 2, 8, rgbx8, std::vector<std::uint8_t>(16));
}

struct TryOutTest : testing::Test, FaceScanning {
    void start(ScanID scan, const ScanConfiguration& /*configuration*/, Callbacks told) override {
        ++starts;
        isOn = true;
        id = scan;
        callbacks = std::move(told);
    }
    void stop() override { isOn = false; }

    TryOutTest() {
        FaceIdentity robin;
        robin.name = "Robin";
        robin.samples.resize(1);
        readiness.vaultUnlocked = readiness.passwordSaved = true;
        readiness.accessibilityTrusted = true;
        readiness.scanDuration = TimeInterval(5);
        readiness.scan.identities =
            std::make_shared<const std::vector<FaceIdentity>>(std::vector{robin});
        tryOut =
            std::make_unique<TryOut>(TryOut::Services{.scanner = *this,
                                                      .mainThread = main,
                                                      .clock = main,
                                                      .windowServer = windowServer,
                                                      .readiness = [this] { return readiness; }},
                                     [this](const TryOut::View& changed) {
                                         view = changed;
                                         if (onChange) onChange();
                                     });
        tryOut->start();
    }
    void see(LivenessDecision decision) {
        const auto told = callbacks;
        told.onInsight({.picture = picture(), .face = Rect{}, .decision = decision});
        if (tryOut)
            told.onFrame(id, ScanObservation::Face{MatchedFace{UUID(), "Robin", 0.7F}, decision});
        main.runPosted();
    }
    [[nodiscard]] std::string verdict() const {
        for (const WindowRow& row : tryPage(view).rows)
            if (const auto* status = std::get_if<WindowRow::Status>(&row))
                return status->title + (status->detail.empty() ? "" : ": " + status->detail);
        return {};
    }

    UnlockReadiness readiness;
    FakeMainThread main;
    FakeWindowServer windowServer;
    int starts = 0;
    bool isOn = false;
    ScanID id{};
    Callbacks callbacks;
    TryOut::View view;
    std::function<void()> onChange;
    std::unique_ptr<TryOut> tryOut;
};

TEST_F(TryOutTest, looksAgainAndAgainWithTheCameraOn) {
    EXPECT_EQ(verdict(), "Starting the camera…");
    see(LivenessDecision::Waiting{LivenessNeeds::headTurn});
    EXPECT_EQ(verdict(), "Looking…: Turn your head a little.");
    see(LivenessDecision::Confirmed{});
    EXPECT_EQ(verdict(), "It would unlock: Asked: Turn your head a little. Recognised");
    EXPECT_TRUE(isOn) << "the picture goes on";
    view = {};
    see(LivenessDecision::Confirmed{});
    EXPECT_TRUE(view.insight && view.result);

    main.advance(TryOut::pause);
    EXPECT_EQ(starts, 2);
    see(LivenessDecision::Denied{LivenessCue::planar});
    EXPECT_EQ(verdict(), "It would not unlock: Turned away: Flat motion. Not recognised");
    main.advance(TimeInterval(30));
    EXPECT_GT(starts, 3) << "nobody came, and the next look began";
    EXPECT_TRUE(isOn);
    tryOut.reset();
    EXPECT_FALSE(isOn);
    EXPECT_THAT(main.timers(), ElementsAre());
}

TEST_F(TryOutTest, mayBeEndedByWhomItTells) {
    onChange = [this] { tryOut.reset(); };
    see(LivenessDecision::Confirmed{});
    EXPECT_FALSE(isOn);
}

TEST_F(TryOutTest, triesAgainAfterTheCameraFailed) {
    see(LivenessDecision::Waiting{LivenessNeeds::realFace});
    callbacks.onCameraFailed("No camera found.");
    main.runPosted();
    EXPECT_FALSE(view.insight);
    EXPECT_THAT(verdict(), testing::HasSubstr("No camera found."));
    main.advance(TryOut::pause);
    EXPECT_EQ(starts, 2);
}

TEST(TryPage, showsEveryCueWithItsLimitAndWhatItMeans) {
    const ScanInsight insight{
        .picture = picture(),
        .face = Rect{},
        .likenesses = {{"Robin", 0.71F, true}, {"Kim", 0.9F, false}, {"Jo", 0.1F, true}},
        .likenessLimit = 0.5F,
        .cues = {{LivenessCue::realFace, 0.93F, 0.62F, true, false},
                 {LivenessCue::planar, std::nullopt, 0.85F, true, false},
                 {LivenessCue::moire, 0.5F, 0.4F, true, false},
                 {LivenessCue::glossGlare, 0.1F, 0.25F, false, false},
                 {LivenessCue::deviceDetected, 0.F, 0.95F, true, true},
                 {LivenessCue::headTurn, 0.F, 0.5F, true, true}},
        .decision = LivenessDecision::Waiting{LivenessNeeds::realFace}};
    std::vector<std::string> meters;
    for (const WindowRow& row : tryPage({.insight = insight, .result = {}}).rows)
        if (const auto* meter = std::get_if<WindowRow::Meter>(&row))
            meters.push_back((meter->isGood ? "+ " : "- ") + meter->title + ": " + meter->detail);
    EXPECT_THAT(
        meters,
        ElementsAre("+ Robin: 0.71, a match from 0.50",
                    "- Kim: 0.90, a match from 0.50, but switched off",
                    "- Jo: 0.10, a match from 0.50",
                    "+ " + inEnglish(title(LivenessCue::realFace)) + ": 0.93, needed: 0.62",
                    "+ " + inEnglish(title(LivenessCue::planar)) +
                        ": not measured in this picture, too much from 0.85",
                    "- Screen pattern: 0.50, too much from 0.40",
                    "+ Glare: 0.10, too much from 0.25, but not counted in this mode",
                    "- Device frame: 0.00, too much from 0.95", "+ Head turn: 0.00, needed: 0.50"));
}

}  // namespace
}  // namespace marrowby
