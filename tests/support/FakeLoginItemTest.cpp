// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakeLoginItem.h"

#include "support/LoginItemContract.h"

namespace {

class FakeBackend {
public:
    LoginItem& item() { return item_; }
    void desktopSwitches(bool on) { item_.enabled = on; }
    void refuseWrites() { item_.failure = "Read-only file system"; }

private:
    FakeLoginItem item_;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, LoginItemContract, FakeBackend);
