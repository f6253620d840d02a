// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/DefaultsStore.h"
#include "UnlockCore/Platform/FileSystem.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// The user's settings in one JSON file (mode 0600), written on every change. A damaged file is
/// renamed and reads as empty; an unreadable one is left alone, and the settings then live in
/// memory only. Main thread.
class JsonDefaultsStore final : public DefaultsStore {
  public:
    JsonDefaultsStore(FileSystem& fileSystem, std::filesystem::path path);
    ~JsonDefaultsStore() override;

    [[nodiscard]] std::optional<DefaultsValue> value(const std::string& key) const override;
    /// `monostate` can't be stored and is ignored.
    void set(const std::string& key, DefaultsValue value) override;
    void remove(const std::string& key) override;

    /// About the last write that failed, else about the read.
    [[nodiscard]] std::optional<std::string> problem() const override {
        return writeProblem_ ? writeProblem_ : readProblem_;
    }

  private:
    struct Document;

    void load();
    void setAside();
    void save();

    FileSystem& fileSystem_;
    std::filesystem::path path_;
    std::unique_ptr<Document> document_;
    bool mayWrite_ = true;
    bool isSaved_ = true;
    /// Stays: what was set is gone or isn't saved.
    std::optional<std::string> readProblem_;
    std::optional<std::string> writeProblem_;
};

}  // namespace marrowby
