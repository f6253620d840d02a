// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/DesktopNotices.h"
#include "UnlockCore/Platform/StatusItem.h"

#include <optional>

namespace marrowby {

class FakeDesktopNotices final : public DesktopNotices {
  public:
    void show(const Notice& notice) override { shown = notice; }
    void withdraw() override { shown.reset(); }

    std::optional<Notice> shown;
};

class FakeStatusItem final : public StatusItem {
  public:
    void show(const Content& content) override { shown = content; }

    std::optional<Content> shown;
};

}  // namespace marrowby
