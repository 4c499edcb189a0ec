#pragma once

#include "Output.h"

#include <QtCore/QString>

/// What to protect or unprotect; an empty name stands for standard input or output.
struct ProtectionOptions
{
    QString input;
    QString output;
    bool strip = false; ///< cut the zero bytes that completed the last block
};

/// Protects bytes of any length, piece by piece, through the facade's operations. A file that is to
/// be replaced stays as it was unless everything went well.
Exit protect(const ProtectionOptions &options, const Output &output);

/// The way back. Refuses what is not whole protected text.
Exit unprotect(const ProtectionOptions &options, const Output &output);
