#pragma once

#include "Measuring/LookMeter.h"

#include <ostream>
#include <span>

namespace marrowby {

/// Attacks let in by kind, owners refused, false matches and false non-matches, each with its exact
/// 95 % interval, and the time to open.
void writeReport(std::ostream& out, std::span<const LookResult> results);

/// One line per look, with a heading. A level is empty where the cue was never measured.
void writeCsv(std::ostream& out, std::span<const LookResult> results);

}  // namespace marrowby
