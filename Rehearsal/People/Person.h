#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace marrowby {

struct PersonModel;

/// Somebody who does not exist, made from a number: the same number gives the same person, another
/// one somebody else. Immutable; any thread may use it. Copies share the model of a few MB, which
/// takes some tenths of a second to make.
class Person {
  public:
    explicit Person(std::uint64_t seed);

    [[nodiscard]] std::uint64_t seed() const { return seed_; }
    [[nodiscard]] const PersonModel& model() const { return *model_; }

  private:
    std::uint64_t seed_;
    std::shared_ptr<const PersonModel> model_;
};

/// Seeds of 200 people whom the embedder tells apart (any two fronts below 0.55) and knows again.
[[nodiscard]] std::span<const std::uint64_t> distinctPeople();

}  // namespace marrowby
