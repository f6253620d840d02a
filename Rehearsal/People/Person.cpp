#include "Rehearsal/People/Person.h"

#include "Rehearsal/People/PersonModel.h"

namespace marrowby {

Person::Person(std::uint64_t seed)
    : seed_(seed), model_(std::make_shared<const PersonModel>(seed)) {}

}  // namespace marrowby
