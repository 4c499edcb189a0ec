// SPDX-License-Identifier: MIT
#pragma once

#include "../Command.h"

/// Adds the group "emulator": for each of the emulator's calls under /_dev/ that looks into it or
/// changes it, a command.
void addAdministrationCommands(Commands commands);
