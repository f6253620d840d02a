// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/WeakSelf.h"

#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

/// Calls back while it goes.
struct LastWord {
    std::function<void()> say;
    ~LastWord() {
        if (say) say();
    }
};

class Owner {
  public:
    explicit Owner(int& heard) : heard_(heard) { member_.say = weakSelf_.guarded(&Owner::hear); }

    [[nodiscard]] std::function<void(std::unique_ptr<int>)> adder() const {
        return weakSelf_.guarded(
            [](Owner& self, const std::unique_ptr<int>& count) { self.heard_ += *count; });
    }
    [[nodiscard]] auto handle() const { return weakSelf_.handle(); }
    void expire() { weakSelf_.expire(); }

  private:
    void hear() { ++heard_; }

    int& heard_;
    LastWord member_;
    WeakSelf<Owner> weakSelf_{this};
};

TEST(WeakSelf, callsTheOwnerWhileItIsThere) {
    int heard = 0;
    auto owner = std::make_unique<Owner>(heard);
    const auto add = owner->adder();
    const auto handle = owner->handle();
    add(std::make_unique<int>(3));
    EXPECT_EQ(heard, 3);
    EXPECT_EQ(handle.get(), owner.get());
    owner.reset();
    add(std::make_unique<int>(3));
    EXPECT_EQ(heard, 3) << "a member that goes, or a late callback, reached the owner";
    EXPECT_EQ(handle.get(), nullptr);
}

TEST(WeakSelf, expiresEarlierWhenTold) {
    int heard = 0;
    Owner owner(heard);
    owner.expire();
    owner.adder()(std::make_unique<int>(3));
    EXPECT_EQ(heard, 0);
    EXPECT_EQ(owner.handle().get(), nullptr);
}

}  // namespace
}  // namespace marrowby
