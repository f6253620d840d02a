// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/StatusItem.h"

#include <memory>
#include <string>

namespace marrowby {

/// A tray icon while the desktop has a tray for it (StatusNotifierItem). Main thread, under a
/// QApplication.
class QtStatusItem final : public StatusItem {
  public:
    explicit QtStatusItem(std::string sessionBus);
    ~QtStatusItem() override;
    QtStatusItem(const QtStatusItem&) = delete;
    QtStatusItem& operator=(const QtStatusItem&) = delete;

    void show(const Content& content) override;

  private:
    class Tray;
    std::unique_ptr<Tray> tray_;
};

}  // namespace marrowby
