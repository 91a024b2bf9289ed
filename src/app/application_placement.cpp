// Where the program's windows stand when they first appear: inside the screen's available
// area, and clear of one another where the screen has room. The main window and the two
// windows that come up with it are placed together, before the wait window stands over
// the main window; the others find room beside whatever is up when they first show.
#include "app/application.h"

#include "platform/window_placement.h"

#include <QGuiApplication>
#include <QScreen>

#include <array>

namespace kdx {

namespace {

// A window not shown yet has no frame to measure: room for a title bar and borders as
// desktops commonly draw them.
constexpr QSize kFrameAllowance{4, 30};

QSize frameExtra(const QWidget* w) { return w->isVisible() ? w->frameGeometry().size() - w->size() : kFrameAllowance; }

WindowSize wish(const QWidget* w)
{
    const QSize extra = frameExtra(w);
    QSize size = w->testAttribute(Qt::WA_Resized) ? w->size() : w->sizeHint();
    // A window cut to less than half its size in either direction (one that scrolls can
    // go that far) is of little use: better whole, over another.
    const QSize least = w->minimumSizeHint().expandedTo(w->minimumSize()).expandedTo(size / 2);
    size = size.expandedTo(least);
    return {size.width() + extra.width(), size.height() + extra.height(), least.width() + extra.width(),
            least.height() + extra.height()};
}

PlaceRect toPlace(const QRect& r) { return {r.x(), r.y(), r.width(), r.height()}; }

void putAt(QWidget* w, const PlaceRect& r)
{
    const QSize extra = frameExtra(w);
    const QSize inner(r.w - extra.width(), r.h - extra.height());
    if (inner != w->size()) w->resize(inner);
    w->move(r.x, r.y); // the frame's top left
}

} // namespace

QRect Application::availableArea() const
{
    const QScreen* s = main.screen() ? main.screen() : QGuiApplication::primaryScreen();
    return s ? s->availableGeometry() : QRect(0, 0, 1366, 768);
}

void Application::placeWorkingWindows(const QRect& area)
{
    // In order of importance: each later one takes the room the earlier ones leave.
    const std::array<QWidget*, 3> windows{&main, &logging, &graph};
    std::array<WindowSize, 3> sizes;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        // The size a window asked for the first time, not what an earlier placement cut
        // it down to.
        const auto [it, _] = wishes_.try_emplace(windows[i], wish(windows[i]));
        sizes[i] = it->second;
    }
    const std::vector<PlaceRect> places = placeWindows(toPlace(area), sizes);
    for (std::size_t i = 0; i < windows.size(); ++i) {
        putAt(windows[i], places[i]);
        placed_.insert(windows[i]);
    }
}

void Application::placeOnFirstShow(QWidget* w)
{
    if (placed_.count(w)) return;
    placed_.insert(w);
    std::vector<PlaceRect> taken;
    for (QWidget* other : {static_cast<QWidget*>(&main), static_cast<QWidget*>(&graph), static_cast<QWidget*>(&logging),
                           static_cast<QWidget*>(&comms), static_cast<QWidget*>(&debug), static_cast<QWidget*>(&wait)})
        if (other != w && other->isVisible()) taken.push_back(toPlace(other->frameGeometry()));
    putAt(w, placeWindow(toPlace(availableArea()), taken, wish(w)));
}

void Application::restoreWishedSizes()
{
    for (const auto& [w, size] : wishes_) const_cast<QWidget*>(w)->resize(QSize(size.w, size.h) - kFrameAllowance);
}

} // namespace kdx
