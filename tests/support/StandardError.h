// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

/// Captures everything that this process writes to standard error, for the lifetime of this object.
class StandardError {
public:
    StandardError() {
        const int taken = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        if (before_ < 0 || taken < 0 || ::dup2(taken, STDERR_FILENO) < 0)
            std::abort();
        ::close(taken);
    }
    ~StandardError() {
        ::dup2(before_, STDERR_FILENO);
        ::close(before_);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    /// The text written so far.
    std::string text() const { return contentOf(file_); }

private:
    TemporaryFolder folder_;
    const std::filesystem::path file_ = folder_.path / "stderr";
    const int before_ = ::dup(STDERR_FILENO);
};
