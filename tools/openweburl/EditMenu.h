// SPDX-License-Identifier: MIT
#pragma once

#include "Texts.h"

#include <QtWidgets/QMenu>

#include <memory>

class QWebEnginePage;

/// The menu for what was clicked last in a page: cut, copy, paste and select all in a field, copy
/// and select all on selected text; null elsewhere. Call it while the page's context menu is asked
/// for; the page must outlive the menu.
std::unique_ptr<QMenu> editMenu(QWebEnginePage &page, const Texts &texts);
