// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Pages/TryPage.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace marrowby {

namespace {

using Row = WindowRow;
using Control = WindowControl;

/// With two digits.
std::string number(float value) {
    constexpr float hundred = 100;
    const auto hundredths = static_cast<int>(std::lround(std::clamp(value, 0.F, 1.F) * hundred));
    const std::string digits = std::to_string(hundredths % 100);
    return std::to_string(hundredths / 100) + "." + (digits.size() < 2 ? "0" : "") + digits;
}

Row meterOf(const ScanInsight::Likeness& likeness, float limit) {
    const Fillings levels{{"level", number(likeness.similarity)}, {"limit", number(limit)}};
    return Row::Meter{
        .title = likeness.name,
        .detail = likeness.isEnabled
                      ? translated("{level}, a match from {limit}", levels)
                      : translated("{level}, a match from {limit}, but switched off", levels),
        .level = std::clamp(likeness.similarity, 0.F, 1.F),
        .limit = limit,
        .isGood = likeness.isEnabled && likeness.similarity >= limit};
}

Row meterOf(const ScanInsight::Cue& cue) {
    const bool isNeeded = role(cue.cue) != LivenessCueRole::deny;
    const Fillings levels{
        {"level", cue.level ? number(*cue.level) : translated("not measured in this picture")},
        {"limit", number(cue.limit)}};
    std::string detail = isNeeded ? translated("{level}, needed: {limit}", levels)
                                  : translated("{level}, too much from {limit}", levels);
    if (!cue.isHeeded)
        detail = translated("{levels}, but not counted in this mode", {{"levels", detail}});
    const bool isReached = cue.level && *cue.level >= cue.limit;
    const bool hasTurned = cue.cue == LivenessCue::headTurn && cue.hasFired;
    return Row::Meter{.title = translated(title(cue.cue)),
                      .detail = std::move(detail),
                      .level = std::clamp(cue.level.value_or(0.F), 0.F, 1.F),
                      .limit = cue.limit,
                      .isGood = isNeeded ? isReached || hasTurned : !isReached && !cue.hasFired};
}

/// The look's decision and why; before it, what the look waits for.
Row verdictOn(const TryOut::View& view) {
    Row::Status verdict{
        .isGood = false, .title = translated("Starting the camera…"), .detail = {}, .fix = {}};
    if (view.result) {
        verdict.isGood = view.result->wouldUnlock;
        verdict.title =
            verdict.isGood ? translated("It would unlock") : translated("It would not unlock");
        for (const std::string& line : view.result->lines)
            verdict.detail += (verdict.detail.empty() ? "" : ". ") + line;
        return verdict;
    }
    if (!view.insight) return verdict;
    verdict.title = view.insight->face ? translated("Looking…") : translated("No face yet");
    if (!view.insight->face) {
        verdict.detail = translated("Sit in front of the camera and look at it.");
        return verdict;
    }
    const auto& decision = view.insight->decision;
    if (const auto refusal = refusalText(decision)) verdict.detail = translated(*refusal);
    if (const auto* waiting = std::get_if<LivenessDecision::Waiting>(&decision))
        verdict.detail =
            waiting->needs.contains(LivenessNeeds::realFace)
                ? translated("More pictures are needed to be sure that the face is live.")
                : translated("Turn your head a little.");
    if (std::holds_alternative<LivenessDecision::Confirmed>(decision))
        verdict.detail = translated("The face is live, but nobody’s that is saved.");
    return verdict;
}

}  // namespace

WindowPage tryPage(const TryOut::View& view) {
    WindowPage page{
        .title = translated("Try it"),
        .detail = translated("It looks as it does at the lock screen, types nothing and keeps "
                             "nothing. The camera is on until you leave this page."),
        .rows = {},
        .problem = {},
        .buttons = {{.id = {Control::cancel}, .title = translated("Done"), .isDefault = true}}};
    Row::Picture picture{.title = translated("What the camera sees, as in a mirror"),
                         .picture = {}};
    if (view.insight)
        picture.picture = windowrow::CameraPicture{view.insight->picture, view.insight->face};
    page.rows = {std::move(picture), verdictOn(view)};
    if (!view.insight) return page;
    const ScanInsight& insight = *view.insight;
    if (!insight.likenesses.empty()) page.rows.emplace_back(Row::Heading{translated("Likeness")});
    for (const auto& likeness : insight.likenesses)
        page.rows.emplace_back(meterOf(likeness, insight.likenessLimit));
    if (!insight.cues.empty())
        page.rows.emplace_back(Row::Heading{translated("Signs of a live face")});
    for (const auto& cue : insight.cues)
        page.rows.emplace_back(meterOf(cue));
    return page;
}

}  // namespace marrowby
