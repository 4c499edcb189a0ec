// SPDX-License-Identifier: MIT
#include "EditMenu.h"

#include <QtWebEngineWidgets/QWebEngineContextMenuData>
#include <QtWebEngineWidgets/QWebEnginePage>

std::unique_ptr<QMenu> editMenu(QWebEnginePage &page, const Texts &texts)
{
    const QWebEngineContextMenuData &clicked = page.contextMenuData();
    const bool isField = clicked.isContentEditable();
    if (!isField && clicked.selectedText().isEmpty())
        return nullptr;
    auto menu = std::make_unique<QMenu>();
    const auto add = [&](const QString &text, QWebEnginePage::WebAction action,
                         QWebEngineContextMenuData::EditFlag needed) {
        QAction *entry =
            menu->addAction(text, &page, [&page, action] { page.triggerAction(action); });
        entry->setEnabled(clicked.editFlags().testFlag(needed));
    };
    if (isField)
        add(texts.cut, QWebEnginePage::Cut, QWebEngineContextMenuData::CanCut);
    add(texts.copy, QWebEnginePage::Copy, QWebEngineContextMenuData::CanCopy);
    if (isField)
        add(texts.paste, QWebEnginePage::Paste, QWebEngineContextMenuData::CanPaste);
    add(texts.selectAll, QWebEnginePage::SelectAll, QWebEngineContextMenuData::CanSelectAll);
    return menu;
}
