#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>

#include <stdlib.h>

namespace marrowby {

/// A sequence's folder in the temporary folder, gone with this value. Its pictures are two by one
/// pixels of one gray, in an uncompressed format: readers go by the content.
class SequenceOnDisk {
  public:
    SequenceOnDisk() {
        std::string name = (std::filesystem::temp_directory_path() / "sequence-XXXXXX").string();
        path_ = ::mkdtemp(name.data());
        path_ /= "look";
        std::filesystem::create_directory(path_);
    }
    ~SequenceOnDisk() {
        std::error_code ignored;
        std::filesystem::remove_all(path_.parent_path(), ignored);
    }
    SequenceOnDisk(const SequenceOnDisk&) = delete;
    SequenceOnDisk& operator=(const SequenceOnDisk&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path_ / name, std::ios::binary) << content;
    }
    /// One picture per gray, and the truth of them.
    void fill(const std::string& grays, double framesPerSecond = 20) const {
        std::ostringstream truth;
        truth << "{\"fps\": " << framesPerSecond << ", \"frames\": [";
        for (std::size_t i = 0; i < grays.size(); ++i) {
            std::ostringstream name;
            name << std::setw(4) << std::setfill('0') << i << ".jpg";
            write(name.str(), "P6 2 1 255\n" + std::string(6, grays[i]));
            truth << (i > 0 ? ", {}" : "{}");
        }
        write("truth.json", truth.str() + "]}");
    }

  private:
    std::filesystem::path path_;
};

}  // namespace marrowby
