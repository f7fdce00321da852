#pragma once

class KeyEvent;
class QString;
class QWidget;

/// A window of an application, as the shell drives it. Thread: GUI.
///
/// Life cycle, in this order:
///
///     onCreate -> onShow -> onEnter -> (in front) -> onExit -> onHide -> onCreate -> ... -> onDestroy
///
/// A window is created anew (resumed) each time it comes to the front; onDestroy is the last call before the
/// root widget goes.
class WindowInterface
{
public:
    virtual ~WindowInterface() = default;

    /// Builds the root widget on the first call, resumes it on later ones.
    virtual void onCreate() = 0;
    /// The root widget is about to be destroyed by the shell.
    virtual void onDestroy() = 0;
    /// The root widget becomes visible.
    virtual void onShow() = 0;
    /// The root widget becomes invisible.
    virtual void onHide() = 0;
    /// The window has come to the front and gets touches and keys from now on.
    virtual void onEnter() = 0;
    /// The window loses the front; it may stay visible for a while.
    virtual void onExit() = 0;
    /// The driver asks to go back. Returns 1 when the window has dealt with it (it then posts what it wants
    /// from the shell), 0 when it hasn't and the shell decides.
    virtual int backEvent() = 0;
    /// A hard key. Returns 1 when the window has dealt with it, else 0. The event is never null and stays the
    /// caller's.
    virtual int keyEvent(KeyEvent* event) = 0;
    /// Name that the launcher shows; may be empty.
    virtual QString name() = 0;

    /// The root widget that the window has handed out, null before onCreate() and after its destruction. The
    /// shell owns it from then on: it parents it into its screen and deletes it.
    virtual QWidget* mainWidget() const = 0;
    /// The window id handed out together with the root widget, 0 before onCreate().
    virtual int mainWidgetId() const = 0;
};

/// A playable source (radio, player ...) of an application. No application of this tree offers one; the type
/// stands so that AppPlugin is complete. Thread: GUI.
class SourceInterface
{
public:
    virtual ~SourceInterface() = default;
    /// Name that the source panel shows.
    virtual QString name() = 0;
};
