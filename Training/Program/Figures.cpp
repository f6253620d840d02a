#include "Rehearsal/People/Person.h"
#include "Training/PackFigures.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr const char* usage =
    "marrowby-pack-figures PEOPLE PACK...\n"
    "A table of how good packs of networks are on so many people that ours did not learn from.\n";

}  // namespace

int main(int argc, char* argv[]) {
    using namespace marrowby;
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto everybody = distinctPeople();
    const std::size_t count =
        words.size() < 2
            ? 0
            : std::min<std::size_t>(std::strtoull(words[0].c_str(), nullptr, 10), everybody.size());
    if (count == 0) {
        std::cerr << usage;
        return EXIT_FAILURE;
    }
    std::vector<std::unique_ptr<PackFigures>> packs;
    for (std::size_t i = 1; i < words.size(); ++i) {
        auto figures = PackFigures::load(words[i]);
        if (!figures) {
            std::cerr << figures.error() << '\n';
            return EXIT_FAILURE;
        }
        packs.push_back(*std::move(figures));
    }
    for (std::size_t i = 0; i < count; ++i) {
        Cast cast;
        for (const auto& pack : packs)
            pack->measure(everybody[i], cast);
        std::cerr << "Measured: " << i + 1 << " of " << count << " people\n";
    }
    // Counts differ with what is found: a row is what it says up to the count.
    const auto title = [](const std::string& what) { return what.substr(0, what.find(" (")); };
    std::vector<std::string> order;
    std::map<std::string, std::vector<std::string>> rows;
    for (std::size_t pack = 0; pack < packs.size(); ++pack) {
        for (const auto& [what, value] : packs[pack]->lines()) {
            auto& row = rows[title(what)];
            if (row.empty()) {
                row.assign(packs.size() + 1, "–");
                row[0] = what;
                order.push_back(title(what));
            }
            row[pack + 1] = value;
        }
    }
    std::cout << "| what |";
    for (std::size_t i = 1; i < words.size(); ++i)
        std::cout << ' ' << words[i] << " |";
    std::cout << "\n|---|";
    for (std::size_t i = 1; i < words.size(); ++i)
        std::cout << "---|";
    std::cout << '\n';
    for (const std::string& row : order) {
        for (const std::string& cell : rows[row])
            std::cout << "| " << cell << ' ';
        std::cout << "|\n";
    }
    return EXIT_SUCCESS;
}
