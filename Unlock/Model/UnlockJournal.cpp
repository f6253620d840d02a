// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/UnlockJournal.h"

namespace marrowby {

void UnlockJournal::add(const LogLine& line, Date now) {
    entries_.push_back({now, line.shown()});
    if (entries_.size() > capacity) entries_.pop_front();
}

}  // namespace marrowby
