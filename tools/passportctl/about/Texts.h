// SPDX-License-Identifier: MIT
#pragma once

#include "CommandTree.h"

// What is made of the declaration of the command line.

/// The manual page, section 1, in the macros of man(7).
QString manualPage(const CommandDescription &program);

/// What a shell is to complete; empty unless it is bash, zsh or fish.
QString completionScript(const CommandDescription &program, const QString &shell);
