// SPDX-License-Identifier: MIT
#include "Window.h"

#include "Address.h"
#include "EditMenu.h"

#include <QtGui/QKeySequence>
#include <QtGui/QScreen>
#include <QtWidgets/QShortcut>

#include <algorithm>

namespace {

constexpr QSize smallest(480, 400);
constexpr QSize usual(640, 480);

} // namespace

Window::Window(Page &page, const Texts &texts)
    : m_page(page)
    , m_texts(texts)
    , m_panel(texts)
    , m_fitted(usual.boundedTo(screen()->availableSize()))
{
    addWidget(&m_view);
    addWidget(&m_notice);
    m_notice.setWidget(&m_panel);
    m_notice.setWidgetResizable(true);
    m_notice.setFrameShape(QFrame::NoFrame);
    m_notice.setFocusPolicy(Qt::NoFocus);
    m_view.setPage(&page);
    m_view.setContextMenuPolicy(Qt::CustomContextMenu);
    setFocusProxy(&m_view); // so that the first key goes to the page
    setMinimumSize(smallest.boundedTo(m_fitted));
    resize(m_fitted);

    connect(&m_view, &QWidget::customContextMenuRequested, this, &Window::openMenu);
    connect(&page, &QWebEnginePage::titleChanged, this, &Window::updateTitle);
    connect(&page, &QWebEnginePage::urlChanged, this, &Window::updateTitle);
    connect(&page, &Page::shown, this, &Window::showPage);
    connect(&page, &Page::failed, this, &Window::showFailure);
    connect(&page, &Page::measured, this, &Window::fitPage);
    connect(&page, &QWebEnginePage::windowCloseRequested, this, &QWidget::close,
            Qt::QueuedConnection);
    connect(&m_panel, &FailurePanel::tryAgainRequested, &page, &Page::loadAgain);
    connect(&m_panel, &FailurePanel::closeRequested, this, &QWidget::close);
    connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this, &QWidget::close);
    updateTitle();
}

void Window::showPage()
{
    if (currentWidget() == &m_view)
        return;
    setCurrentWidget(&m_view);
    m_view.setFocus();
    updateTitle();
}

void Window::showFailure(Page::Failure failure)
{
    m_panel.explain(failure, m_page.wanted());
    setCurrentWidget(&m_notice);
    fit({0, m_panel.heightForWidth(width())});
    updateTitle();
}

void Window::updateTitle()
{
    if (currentWidget() == &m_notice)
        setWindowTitle(titleWithOrigin(m_page.wanted(), m_panel.heading()));
    else
        setWindowTitle(titleWithOrigin(m_page.url().isEmpty() ? m_page.wanted() : m_page.url(),
                                       m_page.title()));
}

void Window::openMenu(const QPoint &position)
{
    std::unique_ptr<QMenu> menu = editMenu(m_page, m_texts);
    if (!menu)
        return;
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu.release()->popup(m_view.mapToGlobal(position));
}

void Window::fitPage(const QSize &contents, bool isRefusal)
{
    // Once, as a page may be higher than the window by its own rule, however high that is.
    const QPair<QUrl, bool> kind(m_page.url(), isRefusal);
    if (m_fittedPages.contains(kind))
        return;
    m_fittedPages.insert(kind);
    fit(contents);
}

void Window::fit(const QSize &contents)
{
    if (size() != m_fitted)
        return;
    const QRect room = screen()->availableGeometry();
    const QSize border = frameSize() - size();
    const QSize largest = room.size() - border;
    setMinimumSize(smallest.boundedTo(largest));
    const QSize fitting = contents.expandedTo(m_fitted).boundedTo(largest);
    if (fitting == size())
        return; // and stays where the user moved it
    m_fitted = fitting;
    resize(m_fitted);
    const QRect frame(pos(), m_fitted + border);
    const QPoint past = frame.bottomRight() - room.bottomRight();
    const QPoint back(std::max(past.x(), 0), std::max(past.y(), 0));
    if (!back.isNull()) // else the window manager still places the window
        move(pos() - back);
}
