// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Pages/TryPage.h"

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
    return Row::Meter{.title = likeness.name,
                      .detail = number(likeness.similarity) + ", a match from " + number(limit) +
                                (likeness.isEnabled ? "" : ", but switched off"),
                      .level = std::clamp(likeness.similarity, 0.F, 1.F),
                      .limit = limit,
                      .isGood = likeness.isEnabled && likeness.similarity >= limit};
}

Row meterOf(const ScanInsight::Cue& cue) {
    const bool isNeeded = role(cue.cue) != LivenessCueRole::deny;
    std::string detail = cue.level ? number(*cue.level) : "not measured in this picture";
    detail += (isNeeded ? ", needed: " : ", too much from ") + number(cue.limit);
    if (!cue.isHeeded) detail += ", but not counted in this mode";
    const bool isReached = cue.level && *cue.level >= cue.limit;
    const bool hasTurned = cue.cue == LivenessCue::headTurn && cue.hasFired;
    return Row::Meter{.title = std::string(title(cue.cue)),
                      .detail = std::move(detail),
                      .level = std::clamp(cue.level.value_or(0.F), 0.F, 1.F),
                      .limit = cue.limit,
                      .isGood = isNeeded ? isReached || hasTurned : !isReached && !cue.hasFired};
}

/// The look's decision and why; before it, what the look waits for.
Row verdictOn(const TryOut::View& view) {
    Row::Status verdict{.isGood = false, .title = "Starting the camera…", .detail = {}, .fix = {}};
    if (view.result) {
        verdict.isGood = view.result->wouldUnlock;
        verdict.title = verdict.isGood ? "It would unlock" : "It would not unlock";
        for (const std::string& line : view.result->lines)
            verdict.detail += (verdict.detail.empty() ? "" : ". ") + line;
        return verdict;
    }
    if (!view.insight) return verdict;
    verdict.title = view.insight->face ? "Looking…" : "No face yet";
    if (!view.insight->face) {
        verdict.detail = "Sit in front of the camera and look at it.";
        return verdict;
    }
    const auto& decision = view.insight->decision;
    if (const auto refusal = refusalText(decision)) verdict.detail = *refusal;
    if (const auto* waiting = std::get_if<LivenessDecision::Waiting>(&decision))
        verdict.detail = waiting->needs.contains(LivenessNeeds::realFace)
                             ? "More pictures are needed to be sure that the face is live."
                             : "Turn your head a little.";
    if (std::holds_alternative<LivenessDecision::Confirmed>(decision))
        verdict.detail = "The face is live, but nobody’s that is saved.";
    return verdict;
}

}  // namespace

WindowPage tryPage(const TryOut::View& view) {
    WindowPage page{.title = "Try it",
                    .detail =
                        "It looks as it does at the lock screen, types nothing and keeps "
                        "nothing. The camera is on until you leave this page.",
                    .rows = {},
                    .problem = {},
                    .buttons = {{.id = {Control::cancel}, .title = "Done", .isDefault = true}}};
    Row::Picture picture{.title = "What the camera sees, as in a mirror", .picture = {}};
    if (view.insight)
        picture.picture = windowrow::CameraPicture{view.insight->picture, view.insight->face};
    page.rows = {std::move(picture), verdictOn(view)};
    if (!view.insight) return page;
    const ScanInsight& insight = *view.insight;
    if (!insight.likenesses.empty()) page.rows.emplace_back(Row::Heading{"Likeness"});
    for (const auto& likeness : insight.likenesses)
        page.rows.emplace_back(meterOf(likeness, insight.likenessLimit));
    if (!insight.cues.empty()) page.rows.emplace_back(Row::Heading{"Signs of a live face"});
    for (const auto& cue : insight.cues)
        page.rows.emplace_back(meterOf(cue));
    return page;
}

}  // namespace marrowby
