// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/Mnemonics.h"

namespace marrowby {

QString Mnemonics::mark(const QString& title) {
    qsizetype place = -1;
    for (const bool onlyBeginnings : {true, false}) {
        for (qsizetype i = 0; i < title.size() && place < 0; ++i) {
            if (onlyBeginnings && i > 0 && title[i - 1].isLetterOrNumber()) continue;
            if (title[i].isLetterOrNumber() && !taken_.contains(title[i].toLower())) place = i;
        }
    }
    if (place >= 0) taken_.insert(title[place].toLower());
    QString marked;
    for (qsizetype i = 0; i < title.size(); ++i) {
        if (i == place) marked += u'&';
        marked += title[i];
        // Escaped: it would mark what follows.
        if (title[i] == u'&') marked += u'&';
    }
    return marked;
}

}  // namespace marrowby
