// SPDX-License-Identifier: MIT
#pragma once

#include "FailurePanel.h"
#include "Page.h"
#include "Texts.h"

#include <QtCore/QPair>
#include <QtCore/QSet>
#include <QtWebEngineWidgets/QWebEngineView>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QStackedWidget>

/// The window around a page: its origin in the title, a notice in place of a page that could not
/// be loaded, a menu to edit with, and a size that fits.
///
/// It grows once for each page, as far as the screen has room, until the user sizes it. It closes
/// itself when the page or the notice asks for that.
class Window : public QStackedWidget
{
    Q_OBJECT

public:
    /// The page and the texts must outlive it.
    Window(Page &page, const Texts &texts);

private:
    void showPage();
    void showFailure(Page::Failure failure);
    void updateTitle();
    void openMenu(const QPoint &position);
    void fitPage(const QSize &contents, bool isRefusal);
    void fit(const QSize &contents);

    Page &m_page;
    const Texts &m_texts;
    QWebEngineView m_view;
    QScrollArea m_notice; ///< around the panel, for large letters on small screens
    FailurePanel m_panel;
    QSize m_fitted; ///< another size than this one is the user's
    QSet<QPair<QUrl, bool>> m_fittedPages;
};
