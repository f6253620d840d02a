#include "Platforms/macOS/OpenDirectoryAccounts.h"

#include "Platforms/macOS/FoundationText.h"

#include <utility>

#import <OpenDirectory/OpenDirectory.h>

namespace marrowby {

namespace {

std::unexpected<DirectoryError> failure(NSError* error) {
    return std::unexpected<DirectoryError>({.domain = plainText(error.domain),
                                            .code = error.code,
                                            .message = plainText(error.localizedDescription)});
}

class AccountRecord final : public Directory::Record {
  public:
    explicit AccountRecord(ODRecord* record) : record_(record) {}

    [[nodiscard]] Directory::Result<void> verifyPassword(
        std::span<const std::uint8_t> password) override {
        @autoreleasepool {
            NSString* const text =
                [[NSString alloc] initWithBytesNoCopy:const_cast<std::uint8_t*>(password.data())
                                               length:password.size()
                                             encoding:NSUTF8StringEncoding
                                         freeWhenDone:NO];
            NSError* error = nil;
            const bool isRight = withoutExceptions(
                false, [&]() -> bool { return [record_ verifyPassword:text error:&error]; });
            if (isRight) return {};
            return failure(error);
        }
    }

  private:
    ODRecord* record_;
};

class AccountNode final : public Directory::Node {
  public:
    explicit AccountNode(ODNode* node) : node_(node) {}

    [[nodiscard]] Directory::Result<std::unique_ptr<Directory::Record>> record(
        const std::string& type, const std::string& name) override {
        @autoreleasepool {
            NSError* error = nil;
            ODRecord* const found = withoutExceptions<ODRecord*>(nil, [&] {
                return [node_ recordWithRecordType:foundationText(type)
                                              name:foundationText(name)
                                        attributes:nil
                                             error:&error];
            });
            if (!found) return failure(error);
            return std::make_unique<AccountRecord>(found);
        }
    }

  private:
    ODNode* node_;
};

}  // namespace

Directory::Result<std::unique_ptr<Directory::Node>> OpenDirectoryAccounts::openNode(
    std::uint32_t type) {
    @autoreleasepool {
        NSError* error = nil;
        ODNode* const node = withoutExceptions<ODNode*>(nil, [&] {
            return [ODNode nodeWithSession:ODSession.defaultSession type:type error:&error];
        });
        if (!node) return failure(error);
        return std::make_unique<AccountNode>(node);
    }
}

}  // namespace marrowby
