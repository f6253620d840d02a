#pragma once

#include "UnlockCore/Platform/DefaultsStore.h"
#include "UnlockCore/Platform/FileSystem.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// The user's settings in one JSON file of mode 0600, written whenever a value changes. A damaged
/// file is kept beside it and reads as empty; one that can't be read stays as it is, and the
/// settings of this run are then in memory only. Main thread.
class JsonDefaultsStore final : public DefaultsStore {
  public:
    JsonDefaultsStore(FileSystem& fileSystem, std::filesystem::path path);
    ~JsonDefaultsStore() override;

    [[nodiscard]] std::optional<DefaultsValue> value(const std::string& key) const override;
    /// `monostate` can't be stored and is left out.
    void set(const std::string& key, DefaultsValue value) override;
    void remove(const std::string& key) override;

    /// A sentence about the last reading or writing that went wrong; nothing after a good one.
    [[nodiscard]] const std::optional<std::string>& problem() const { return problem_; }

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
    std::optional<std::string> problem_;
};

}  // namespace marrowby
