// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/DesktopNotices.h"

#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Notices through org.freedesktop.Notifications. One that is still wanted, unless it is brief, is
/// shown again when the server or the bus comes back. Main thread, under Qt's event loop.
class FreedesktopNotices final : public DesktopNotices {
  public:
    /// `onUnavailable`, which may be empty, is called once, with a sentence for the log, when
    /// nobody shows notices with buttons.
    FreedesktopNotices(std::string busAddress,
                       std::function<void(const std::string&)> onUnavailable);
    ~FreedesktopNotices() override;
    FreedesktopNotices(const FreedesktopNotices&) = delete;
    FreedesktopNotices& operator=(const FreedesktopNotices&) = delete;

    void show(const Notice& notice) override;
    void withdraw() override;

  private:
    class Server;
    std::unique_ptr<Server> server_;
};

}  // namespace marrowby
