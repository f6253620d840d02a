// SPDX-License-Identifier: Apache-2.0
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

std::unexpected<DirectoryError> failure(NSException* exception) {
    return std::unexpected<DirectoryError>(
        {.domain = plainText(exception.name), .code = 0, .message = plainText(exception.reason)});
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
            @try {
                NSError* error = nil;
                if ([record_ verifyPassword:text error:&error]) return {};
                return failure(error);
            } @catch (NSException* exception) {
                return failure(exception);
            }
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
            @try {
                NSError* error = nil;
                ODRecord* const found = [node_ recordWithRecordType:foundationText(type)
                                                               name:foundationText(name)
                                                         attributes:nil
                                                              error:&error];
                if (!found) return failure(error);
                return std::make_unique<AccountRecord>(found);
            } @catch (NSException* exception) {
                return failure(exception);
            }
        }
    }

  private:
    ODNode* node_;
};

}  // namespace

Directory::Result<std::unique_ptr<Directory::Node>> OpenDirectoryAccounts::openNode(
    std::uint32_t type) {
    @autoreleasepool {
        @try {
            NSError* error = nil;
            ODNode* const node = [ODNode nodeWithSession:ODSession.defaultSession
                                                    type:type
                                                   error:&error];
            if (!node) return failure(error);
            return std::make_unique<AccountNode>(node);
        } @catch (NSException* exception) {
            return failure(exception);
        }
    }
}

}  // namespace marrowby
