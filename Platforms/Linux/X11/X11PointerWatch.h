#pragma once

#include "UnlockCore/Platform/WindowServer.h"

#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// The pointer of an X display, asked for its place after raw motion, which no grab holds back.
/// On the thread of Qt's event loop; a lost display falls silent.
class X11PointerWatch final : public WindowServer::PointerWatch {
  public:
    /// Nothing where the display has no raw motion.
    [[nodiscard]] static std::unique_ptr<X11PointerWatch> create(
        const std::string& displayName, std::function<void(const Point&)> onPlace);
    ~X11PointerWatch() override;

  private:
    struct Watch;
    explicit X11PointerWatch(std::unique_ptr<Watch> watch);

    std::unique_ptr<Watch> watch_;
};

}  // namespace marrowby
