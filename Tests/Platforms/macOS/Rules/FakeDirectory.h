// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/Directory.h"

#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace marrowby {

/// A directory with one user's record; the test chooses the result and the faults.
class FakeDirectory final : public Directory {
  public:
    std::optional<DirectoryError> nodeFault;
    std::optional<DirectoryError> recordFault;
    /// Empty: the password is right.
    std::optional<DirectoryError> verdict;
    std::vector<std::string> asked;

    [[nodiscard]] Result<std::unique_ptr<Node>> openNode(std::uint32_t type) override {
        std::ostringstream text;
        text << "node 0x" << std::hex << type;
        asked.push_back(text.str());
        if (nodeFault) return std::unexpected(*nodeFault);
        return std::make_unique<Entry>(*this);
    }

  private:
    class Entry final : public Node, public Record {
      public:
        explicit Entry(FakeDirectory& owner) : owner_(owner) {}
        [[nodiscard]] Result<std::unique_ptr<Record>> record(const std::string& type,
                                                             const std::string& name) override {
            owner_.asked.push_back(type + " " + name);
            if (owner_.recordFault) return std::unexpected(*owner_.recordFault);
            return std::make_unique<Entry>(owner_);
        }
        [[nodiscard]] Result<void> verifyPassword(std::span<const std::uint8_t> password) override {
            owner_.asked.push_back("verify " + std::string(password.begin(), password.end()));
            if (owner_.verdict) return std::unexpected(*owner_.verdict);
            return {};
        }

      private:
        FakeDirectory& owner_;
    };
};

}  // namespace marrowby
