// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/FoundationNotificationCenter.h"

#include "Platforms/macOS/FoundationText.h"

#include <map>
#include <utility>

#import <AppKit/AppKit.h>

@interface MarrowbyNotificationObserver : NSObject
- (instancetype)initWithReceived:(void (^)(void))received;
- (void)received:(NSNotification*)notification;
@end

@implementation MarrowbyNotificationObserver {
    void (^_received)(void);
}

- (instancetype)initWithReceived:(void (^)(void))received {
    self = [super init];
    if (self) _received = [received copy];
    return self;
}

- (void)received:(NSNotification*)__unused notification {
    _received();
}

@end

namespace marrowby {

struct FoundationNotificationCenter::Observers {
    struct Observer {
        MarrowbyNotificationObserver* object;
        std::shared_ptr<const std::function<void()>> handler;
    };

    NSNotificationCenter* center;
    MainThread& mainThread;
    std::uint64_t lastToken = 0;
    std::map<Token, Observer> byToken;

    void deliver(Token token) const {
        const auto entry = byToken.find(token);
        if (entry == byToken.end()) return;
        // Copy: the handler may remove itself.
        const auto handler = entry->second.handler;
        (*handler)();
    }

    void add(MarrowbyNotificationObserver* object, NSString* name) const {
        if ([center isKindOfClass:NSDistributedNotificationCenter.class]) {
            [static_cast<NSDistributedNotificationCenter*>(center)
                       addObserver:object
                          selector:@selector(received:)
                              name:name
                            object:nil
                suspensionBehavior:NSNotificationSuspensionBehaviorDeliverImmediately];
        } else {
            [center addObserver:object selector:@selector(received:) name:name object:nil];
        }
    }
};

FoundationNotificationCenter::FoundationNotificationCenter(std::shared_ptr<Observers> observers)
    : observers_(std::move(observers)) {}

FoundationNotificationCenter::~FoundationNotificationCenter() {
    for (const auto& [token, observer] : observers_->byToken)
        [observers_->center removeObserver:observer.object];
    // Emptied first: a running handler may be what destroys this object.
    observers_->byToken.clear();
}

std::unique_ptr<NotificationCenter> FoundationNotificationCenter::workspace(
    MainThread& mainThread) {
    return std::unique_ptr<NotificationCenter>(new FoundationNotificationCenter(
        std::make_shared<Observers>(NSWorkspace.sharedWorkspace.notificationCenter, mainThread)));
}

std::unique_ptr<NotificationCenter> FoundationNotificationCenter::distributed(
    MainThread& mainThread) {
    return std::unique_ptr<NotificationCenter>(new FoundationNotificationCenter(
        std::make_shared<Observers>(NSDistributedNotificationCenter.defaultCenter, mainThread)));
}

std::unique_ptr<NotificationCenter> FoundationNotificationCenter::local(MainThread& mainThread) {
    return std::unique_ptr<NotificationCenter>(new FoundationNotificationCenter(
        std::make_shared<Observers>(NSNotificationCenter.defaultCenter, mainThread)));
}

NotificationCenter::Token FoundationNotificationCenter::observe(std::string name,
                                                                std::function<void()> handler) {
    const Token token{++observers_->lastToken};
    MainThread* const mainThread = &observers_->mainThread;
    const std::weak_ptr<Observers> weak = observers_;
    MarrowbyNotificationObserver* const object =
        [[MarrowbyNotificationObserver alloc] initWithReceived:^{
          mainThread->post([weak, token] {
              if (const auto observers = weak.lock()) observers->deliver(token);
          });
        }];
    observers_->byToken.emplace(
        token, Observers::Observer{
                   object, std::make_shared<const std::function<void()>>(std::move(handler))});
    observers_->add(object, foundationText(name));
    return token;
}

void FoundationNotificationCenter::remove(Token token) {
    const auto entry = observers_->byToken.find(token);
    if (entry == observers_->byToken.end()) return;
    [observers_->center removeObserver:entry->second.object];
    observers_->byToken.erase(entry);
}

void FoundationNotificationCenter::post(const std::string& name) {
    [observers_->center postNotificationName:foundationText(name) object:nil];
}

}  // namespace marrowby
