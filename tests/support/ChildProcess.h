#pragma once

#include <functional>

/// Runs a check in a forked child whose limits and identity it may change at will; its result, 0 to
/// 255, comes back. -1 when the child was killed or none could be made.
int inChildProcess(const std::function<int()> &check);

/// The same, where no file may grow beyond a few kilobytes.
int onAFullDisk(const std::function<int()> &check);

/// Gives up root for good, so that permissions count; true also when there was nothing to give up.
/// For a child process only.
bool dropRoot();
