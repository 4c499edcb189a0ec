// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

/// Runs a check in a forked child where no file may grow beyond a few kilobytes. Its result, 0 to
/// 255, comes back; -1 when the child was killed or none could be made.
int onAFullDisk(const std::function<int()> &check);
