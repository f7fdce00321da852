#pragma once

#include <QPoint>

class QWidget;

/// Touches as a finger gives them: at a pixel of a page, delivered to the widget that lies there, which then
/// holds the finger until it is lifted.
namespace touch {

/// Presses at pos (page coordinates); returns the widget that took it.
QWidget* press(QWidget* page, const QPoint& pos);
/// Moves the finger that is down; pos may lie off the page.
void move(QWidget* page, const QPoint& pos);
/// Lifts the finger.
void release(QWidget* page, const QPoint& pos);
/// press() and release() at one place.
void click(QWidget* page, const QPoint& pos);
/// The point of page at which the middle of child lies.
QPoint middle(const QWidget* page, const QWidget* child);

} // namespace touch
