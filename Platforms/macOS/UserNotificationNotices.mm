// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/UserNotificationNotices.h"

#include "Platforms/macOS/FoundationText.h"

#include <functional>
#include <utility>

#import <UserNotifications/UserNotifications.h>

/// The centre holds its delegate weakly, and calls it on any thread.
@interface MarrowbyNoticesDelegate : NSObject <UNUserNotificationCenterDelegate>
- (instancetype)initWithPressed:(void (^)(NSString*))pressed;
@end

@implementation MarrowbyNoticesDelegate {
    void (^_pressed)(NSString*);
}

- (instancetype)initWithPressed:(void (^)(NSString*))pressed {
    self = [super init];
    if (self) _pressed = [pressed copy];
    return self;
}

- (void)userNotificationCenter:(UNUserNotificationCenter*)__unused center
       willPresentNotification:(UNNotification*)__unused notification
         withCompletionHandler:
             (void (^)(UNNotificationPresentationOptions options))completionHandler {
    completionHandler(UNNotificationPresentationOptionBanner |
                      UNNotificationPresentationOptionList);
}

- (void)userNotificationCenter:(UNUserNotificationCenter*)__unused center
    didReceiveNotificationResponse:(UNNotificationResponse*)response
             withCompletionHandler:(void (^)(void))completionHandler {
    if (![response.actionIdentifier isEqualToString:UNNotificationDismissActionIdentifier])
        _pressed(response.notification.request.identifier);
    completionHandler();
}

@end

namespace marrowby {
namespace {

NSString* const category = @"confirm";

}  // namespace

struct UserNotificationNotices::Center {
    UNUserNotificationCenter* center;
    MarrowbyNoticesDelegate* delegate;
    /// Of the notice that is shown or about to be; nil where none is.
    NSString* shown;
    std::function<void()> onPressed;

    void press(NSString* identifier) {
        if (![identifier isEqualToString:shown]) return;
        shown = nil;
        // Copy: the callback may change it.
        if (const auto report = onPressed) report();
    }
};

UserNotificationNotices::UserNotificationNotices(MainThread& mainThread)
    : mainThread_(mainThread) {}

UserNotificationNotices::~UserNotificationNotices() {
    if (!center_) return;
    withdraw();
    center_->center.delegate = nil;
}

void UserNotificationNotices::show(const Notice& notice) {
    withdraw();
    if (!center_) {
        center_ = std::make_shared<Center>();
        center_->center = UNUserNotificationCenter.currentNotificationCenter;
        MainThread* const mainThread = &mainThread_;
        const std::weak_ptr<Center> weak = center_;
        center_->delegate = [[MarrowbyNoticesDelegate alloc] initWithPressed:^(NSString* pressed) {
          mainThread->post([weak, pressed] {
              if (const auto center = weak.lock()) center->press(pressed);
          });
        }];
        center_->center.delegate = center_->delegate;
    }
    center_->onPressed = onPressed;
    UNNotificationAction* const button =
        [UNNotificationAction actionWithIdentifier:category
                                             title:foundationText(notice.button)
                                           options:UNNotificationActionOptionForeground];
    [center_->center
        setNotificationCategories:[NSSet setWithObject:[UNNotificationCategory
                                                           categoryWithIdentifier:category
                                                                          actions:@[ button ]
                                                                intentIdentifiers:@[]
                                                                          options:0]]];
    UNMutableNotificationContent* const content = [[UNMutableNotificationContent alloc] init];
    content.title = foundationText(notice.title);
    content.body = foundationText(notice.text);
    content.categoryIdentifier = category;
    NSString* const identifier = NSUUID.UUID.UUIDString;
    center_->shown = identifier;
    MainThread* const mainThread = &mainThread_;
    const std::weak_ptr<Center> weak = center_;
    const auto add = [weak, content, identifier] {
        const auto center = weak.lock();
        // Withdrawn while the user was asked.
        if (!center || ![identifier isEqualToString:center->shown]) return;
        [center->center
            addNotificationRequest:[UNNotificationRequest requestWithIdentifier:identifier
                                                                        content:content
                                                                        trigger:nil]
             withCompletionHandler:nil];
    };
    [center_->center requestAuthorizationWithOptions:UNAuthorizationOptionAlert
                                   completionHandler:^(BOOL isGranted, NSError*) {
                                     if (isGranted) mainThread->post(add);
                                   }];
}

void UserNotificationNotices::withdraw() {
    if (!center_ || center_->shown == nil) return;
    NSArray<NSString*>* const identifiers = @[ std::exchange(center_->shown, nil) ];
    [center_->center removePendingNotificationRequestsWithIdentifiers:identifiers];
    [center_->center removeDeliveredNotificationsWithIdentifiers:identifiers];
}

}  // namespace marrowby
