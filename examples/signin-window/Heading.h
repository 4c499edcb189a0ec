// SPDX-License-Identifier: MIT
#pragma once

class QLabel;

/// A page's heading, without a text yet.
QLabel *newHeading();
