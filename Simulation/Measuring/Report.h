// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Measuring/Trial.h"

#include <ostream>
#include <span>
#include <vector>

namespace marrowby {

/// All takes, judged in one way.
struct TrialResults {
    Trial trial;
    std::vector<TakeResult> results;
};

/// Attacks let in by kind, owners refused and by what, false matches and false non-matches, each
/// with its exact 95 % interval, and the time to open.
void writeReport(std::ostream& out, std::span<const TakeResult> results);

/// The report of each whole trial, and the rates with each cue left out in turn.
void writeReport(std::ostream& out, std::span<const TrialResults> trials);

/// One line per take, with a heading. A level is empty where the cue was never measured.
void writeCsv(std::ostream& out, std::span<const TrialResults> trials);

}  // namespace marrowby
