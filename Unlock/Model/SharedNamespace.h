#pragma once

#include <optional>
#include <string>

namespace marrowby {

/// Under which name the application's data lie apart from those of other copies of it; none for the
/// usual one. `chosen`: the user default "sharedNamespace"; `testTag`: of the application's bundle.
[[nodiscard]] std::optional<std::string> sharedNamespace(std::optional<std::string> chosen,
                                                         const std::optional<std::string>& testTag);

}  // namespace marrowby
