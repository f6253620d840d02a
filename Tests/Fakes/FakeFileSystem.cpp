#include "Tests/Fakes/FakeFileSystem.h"

#include <algorithm>
#include <limits>
#include <system_error>
#include <utility>

namespace marrowby {

namespace {

FileError errorOf(std::errc code) {
    return {.code = static_cast<int>(code), .message = std::make_error_code(code).message()};
}

std::unexpected<FileError> failure(std::errc code) {
    return std::unexpected(errorOf(code));
}

}  // namespace

FakeFileSystem::FakeFileSystem() {
    const auto root = std::make_shared<Node>(Node{.isFolder = true, .bytes = {}, .flushed = {}});
    const MutexLock lock(mutex_);
    names_["/"] = root;
    flushedNames_["/"] = root;
}

FileError FakeFileSystem::error() {
    return errorOf(std::errc::io_error);
}

bool FakeFileSystem::exists(const std::filesystem::path& path) const {
    const MutexLock lock(mutex_);
    return names_.contains(path);
}

std::expected<FakeFileSystem::Bytes, FileError> FakeFileSystem::read(
    const std::filesystem::path& path, std::size_t limit) {
    const MutexLock lock(mutex_);
    if (fails(path)) return std::unexpected(error());
    const auto found = names_.find(path);
    if (found == names_.end()) return failure(std::errc::no_such_file_or_directory);
    if (found->second->isFolder) return failure(std::errc::is_a_directory);
    if (found->second->bytes.size() > limit) return failure(std::errc::file_too_large);
    return found->second->bytes;
}

std::expected<void, FileError> FakeFileSystem::makeFolder(const std::filesystem::path& path) {
    const MutexLock lock(mutex_);
    if (fails(path)) return std::unexpected(error());
    if (isFolder(path)) return {};
    if (names_.contains(path)) return failure(std::errc::file_exists);
    if (!isFolder(path.parent_path())) return failure(std::errc::no_such_file_or_directory);
    names_[path] = std::make_shared<Node>(Node{.isFolder = true, .bytes = {}, .flushed = {}});
    return {};
}

std::expected<FileSystem::File, FileError> FakeFileSystem::createExclusively(
    const std::filesystem::path& path) {
    const MutexLock lock(mutex_);
    if (fails(path)) return std::unexpected(error());
    if (names_.contains(path)) return failure(std::errc::file_exists);
    if (!isFolder(path.parent_path())) return failure(std::errc::no_such_file_or_directory);
    const auto node = std::make_shared<Node>();
    names_[path] = node;
    open_[++lastHandle_] = node;
    return File{lastHandle_};
}

std::expected<void, FileError> FakeFileSystem::write(File file,
                                                     std::span<const std::uint8_t> bytes) {
    const MutexLock lock(mutex_);
    const bool hasFailed = fails({});
    Bytes& content = open_.at(file.handle)->bytes;
    const auto taken = bytes.first(hasFailed ? bytes.size() / 2 : bytes.size());
    content.insert(content.end(), taken.begin(), taken.end());
    if (hasFailed) return std::unexpected(error());
    return {};
}

std::expected<void, FileError> FakeFileSystem::flush(File file) {
    const MutexLock lock(mutex_);
    if (fails({})) return std::unexpected(error());
    open_.at(file.handle)->flushed = open_.at(file.handle)->bytes;
    return {};
}

void FakeFileSystem::close(File file) {
    const MutexLock lock(mutex_);
    open_.erase(file.handle);
}

std::expected<void, FileError> FakeFileSystem::setPrivateMode(const std::filesystem::path& path) {
    const MutexLock lock(mutex_);
    if (fails(path)) return std::unexpected(error());
    if (!names_.contains(path)) return failure(std::errc::no_such_file_or_directory);
    return {};
}

std::expected<void, FileError> FakeFileSystem::rename(const std::filesystem::path& from,
                                                      const std::filesystem::path& to) {
    const MutexLock lock(mutex_);
    if (fails(to)) return std::unexpected(error());
    const auto found = names_.find(from);
    if (found == names_.end()) return failure(std::errc::no_such_file_or_directory);
    auto node = found->second;
    names_.erase(found);
    names_[to] = std::move(node);
    return {};
}

std::expected<void, FileError> FakeFileSystem::flushFolder(const std::filesystem::path& path) {
    const MutexLock lock(mutex_);
    if (fails(path)) return std::unexpected(error());
    if (!isFolder(path)) return failure(std::errc::no_such_file_or_directory);
    const auto isEntry = [&](const auto& entry) { return entry.first.parent_path() == path; };
    std::erase_if(flushedNames_, isEntry);
    std::ranges::copy_if(names_, std::inserter(flushedNames_, flushedNames_.end()), isEntry);
    return {};
}

std::expected<void, FileError> FakeFileSystem::remove(const std::filesystem::path& path) {
    const MutexLock lock(mutex_);
    if (fails(path)) return std::unexpected(error());
    if (names_.erase(path) == 0) return failure(std::errc::no_such_file_or_directory);
    return {};
}

void FakeFileSystem::failCall(std::size_t call) {
    expect(call, call);
}

void FakeFileSystem::failFrom(std::size_t call) {
    expect(call, std::numeric_limits<std::size_t>::max());
}

void FakeFileSystem::heal() {
    expect(1, 0);
    const MutexLock lock(mutex_);
    denied_.clear();
}

void FakeFileSystem::deny(const std::filesystem::path& path) {
    const MutexLock lock(mutex_);
    denied_.insert(path);
}

std::size_t FakeFileSystem::calls() const {
    const MutexLock lock(mutex_);
    return calls_;
}

void FakeFileSystem::losePower(Names names) {
    const MutexLock lock(mutex_);
    open_.clear();
    if (names == Names::lost) names_ = flushedNames_;
    // A folder without a name takes what is in it along; parents come first.
    NameTable reachable;
    for (const auto& entry : names_) {
        const auto parent = entry.first.parent_path();
        if (parent == entry.first || reachable.contains(parent)) reachable.insert(entry);
    }
    names_ = reachable;
    flushedNames_ = reachable;
    for (const auto& [path, node] : names_)
        node->bytes = node->flushed;
}

void FakeFileSystem::put(const std::filesystem::path& path, const Bytes& bytes) {
    const MutexLock lock(mutex_);
    for (auto folder = path.parent_path(); !names_.contains(folder);
         folder = folder.parent_path()) {
        names_[folder] = std::make_shared<Node>(Node{.isFolder = true, .bytes = {}, .flushed = {}});
        flushedNames_[folder] = names_[folder];
    }
    names_[path] =
        std::make_shared<Node>(Node{.isFolder = false, .bytes = bytes, .flushed = bytes});
    flushedNames_[path] = names_[path];
}

std::optional<FakeFileSystem::Bytes> FakeFileSystem::content(
    const std::filesystem::path& path) const {
    const MutexLock lock(mutex_);
    const auto found = names_.find(path);
    if (found == names_.end() || found->second->isFolder) return std::nullopt;
    return found->second->bytes;
}

std::vector<std::filesystem::path> FakeFileSystem::files() const {
    const MutexLock lock(mutex_);
    std::vector<std::filesystem::path> files;
    for (const auto& [path, node] : names_) {
        if (!node->isFolder) files.push_back(path);
    }
    return files;
}

std::size_t FakeFileSystem::openFiles() const {
    const MutexLock lock(mutex_);
    return open_.size();
}

bool FakeFileSystem::fails(const std::filesystem::path& path) {
    const std::size_t call = calls_++;
    return denied_.contains(path) || (firstFailing_ <= call && call <= lastFailing_);
}

bool FakeFileSystem::isFolder(const std::filesystem::path& path) const {
    const auto found = names_.find(path);
    return found != names_.end() && found->second->isFolder;
}

void FakeFileSystem::expect(std::size_t first, std::size_t last) {
    const MutexLock lock(mutex_);
    calls_ = 0;
    firstFailing_ = first;
    lastFailing_ = last;
}

}  // namespace marrowby
