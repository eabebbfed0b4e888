// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakeUserDefaults.h"

#include "support/FakeMainLoop.h"
#include "support/UserDefaultsContract.h"

#include <gtest/gtest.h>

namespace {

class FakeBackend {
public:
    std::unique_ptr<UserDefaults> open() { return std::make_unique<FakeUserDefaults>(loop_, content_); }
    template <class Condition>
    bool waitUntil(Condition condition) {
        loop_.runDue();
        return condition();
    }
    void settle() { loop_.runDue(); }
    void refuseWrites() { content_->refusesWrites = true; }

private:
    FakeClock clock_;
    FakeMainLoop loop_{clock_};
    std::shared_ptr<FakeUserDefaults::Content> content_ = std::make_shared<FakeUserDefaults::Content>();
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(FakeUserDefaults, UserDefaultsContract, FakeBackend);
