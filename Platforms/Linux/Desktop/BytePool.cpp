// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/BytePool.h"

#include "UnlockCore/Foundation/Mutex.h"

#include <utility>

namespace marrowby {

class BytePool::Spare {
  public:
    using Piece = std::unique_ptr<std::vector<std::uint8_t>>;

    explicit Spare(std::size_t most) : most_(most) {
        const MutexLock lock(mutex_);
        pieces_.reserve(most);
    }

    [[nodiscard]] Piece take() EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        if (pieces_.empty()) return std::make_unique<std::vector<std::uint8_t>>();
        Piece piece = std::move(pieces_.back());
        pieces_.pop_back();
        return piece;
    }
    void giveBack(Piece piece) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        if (pieces_.size() < most_) pieces_.push_back(std::move(piece));
    }

  private:
    const std::size_t most_;
    Mutex mutex_;
    std::vector<Piece> pieces_ GUARDED_BY(mutex_);
};

BytePool::BytePool(std::size_t mostSpare) : spare_(std::make_shared<Spare>(mostSpare)) {}

std::shared_ptr<std::vector<std::uint8_t>> BytePool::take(std::size_t size) const {
    auto piece = spare_->take();
    piece->resize(size);
    return {piece.release(), [weak = std::weak_ptr(spare_)](std::vector<std::uint8_t>* bytes) {
                Spare::Piece owned(bytes);
                if (const auto spare = weak.lock()) spare->giveBack(std::move(owned));
            }};
}

}  // namespace marrowby
