#include "UnlockCore/LockWatching/NotedKeyEvents.h"

#include <utility>

namespace marrowby {
namespace {

class NotedSource final : public KeyEventSource {
  public:
    NotedSource(std::unique_ptr<KeyEventSource> source, OwnKeystrokes& own)
        : source_(std::move(source)), own_(own) {}

    [[nodiscard]] bool isAdmitted(const std::function<bool()>& stillLocked) override {
        const OwnKeystrokes::Posting posting(own_);
        return source_->isAdmitted(stillLocked);
    }
    [[nodiscard]] KeyPace pace() const override { return source_->pace(); }
    [[nodiscard]] bool post(const KeyPress& press) override {
        const OwnKeystrokes::Posting posting(own_);
        return source_->post(press);
    }
    [[nodiscard]] bool postText(std::span<const char16_t> units, bool down) override {
        const OwnKeystrokes::Posting posting(own_);
        return source_->postText(units, down);
    }
    [[nodiscard]] bool isUndisturbed() override { return source_->isUndisturbed(); }
    void settle(const std::function<bool()>& stillLocked) override { source_->settle(stillLocked); }

  private:
    std::unique_ptr<KeyEventSource> source_;
    OwnKeystrokes& own_;
};

}  // namespace

std::unique_ptr<KeyEventSource> NotedKeyEvents::makeSource(std::span<const char16_t> text,
                                                           std::span<const std::uint32_t> codes) {
    auto source = keyEvents_.makeSource(text, codes);
    if (!source) return nullptr;
    return std::make_unique<NotedSource>(std::move(source), own_);
}

}  // namespace marrowby
