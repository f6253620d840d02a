// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace marrowby {

/// Moments of a rehearsal on one picture: what the camera saw and, below it, the upper edge of the
/// screen with the island. Under a QGuiApplication.
class ContactSheet {
  public:
    struct Moment {
        std::string caption;
        /// Null where it saw nothing.
        QImage camera;
        /// All of it, with the island at the middle of its upper edge.
        QImage screen;
    };

    void add(Moment moment) { moments_.push_back(std::move(moment)); }
    [[nodiscard]] bool isEmpty() const { return moments_.empty(); }
    [[nodiscard]] QImage drawn() const;
    /// As PNG, in a folder that is made if need be. The error is a sentence for the user.
    [[nodiscard]] std::expected<void, std::string> save(const std::filesystem::path& file) const;

  private:
    std::vector<Moment> moments_;
};

}  // namespace marrowby
