// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/NotificationCenter.h"

#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

/// Records its calls. It answers and calls its delegate on a thread of its own, as the port allows.
class FakeNotificationCenter final : public NotificationCenter {
public:
    AuthorizationStatus status = AuthorizationStatus::notDetermined;

    Delegate* delegate = nullptr;
    std::vector<std::vector<Category>> categories; ///< every set that was registered
    std::vector<Options> authorizationRequests;
    std::vector<Request> requests; ///< in the order in which they were added
    std::vector<std::string> removed;
    int statusQuestions = 0;

    void setDelegate(Delegate* newDelegate) override { delegate = newDelegate; }

    void setNotificationCategories(std::vector<Category> all) override { categories.push_back(std::move(all)); }

    void getAuthorizationStatus(std::function<void(AuthorizationStatus)> answer) override {
        ++statusQuestions;
        elsewhere([&] { answer(status); });
    }

    void requestAuthorization(Options options) override { authorizationRequests.push_back(options); }

    void add(Request request) override { requests.push_back(std::move(request)); }

    void removeDelivered(const std::vector<std::string>& identifiers) override {
        removed.insert(removed.end(), identifiers.begin(), identifiers.end());
    }

    /// The user presses a button of a notification. True when the delegate has completed.
    bool press(const std::string& action) {
        bool completed = false;
        elsewhere([&] { delegate->didReceive(action, [&] { completed = true; }); });
        return completed;
    }

    /// A notification is shown without buttons.
    void presentWithoutButtons(const std::string& identifier) {
        elsewhere([&] { delegate->didPresentWithoutButtons(identifier); });
    }

private:
    static void elsewhere(const std::function<void()>& task) { std::thread(task).join(); }
};
