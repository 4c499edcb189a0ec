#pragma once

#include "Output.h"

/// Explains a 32-bit error code of the library: its parts, its name and what it means to a user.
Exit explain(const QString &code, const Output &output);
