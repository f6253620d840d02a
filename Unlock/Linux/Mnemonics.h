// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSet>
#include <QString>

namespace marrowby {

/// The Alt keys of one page, each given once.
class Mnemonics {
  public:
    /// The title as Qt wants it: the first free beginning of a word is its key, else the first free
    /// letter, else it has none.
    [[nodiscard]] QString mark(const QString& title);

  private:
    QSet<QChar> taken_;
};

}  // namespace marrowby
