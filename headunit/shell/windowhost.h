#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>

class KeyEvent;
class WindowInterface;

namespace headunit {

/// Drives one application window through its life, in the framework's order:
///
///     open()    onCreate  onShow  (root widget shown)  onEnter
///     leave()   onExit    (root widget hidden)  onHide
///     destroy() leave() when in front, then onDestroy, and the root widget is deleted
///
/// open() after leave() resumes the same root widget; after destroy() the window builds a new one. Calls that
/// don't fit the state do nothing. What a window throws is logged and ends here. Thread: GUI.
class WindowHost : public QObject
{
    Q_OBJECT
public:
    /// window: stays the plug-in's and outlives this object. area: where root widgets are shown, filling it.
    WindowHost(int id, WindowInterface* window, QWidget* area, QObject* parent = nullptr);
    /// Destroys the window's root widget in order.
    ~WindowHost() override;

    int id() const { return m_id; }
    /// In the unit's language; the last one that it had when it can't be told.
    QString name() const;
    /// As the window's own; 0 when it throws.
    int keyEvent(KeyEvent* event);
    int backEvent();
    /// Null while there is none.
    QWidget* root() const { return m_root; }
    bool isInFront() const { return m_inFront; }
    /// Between the first onCreate() and onDestroy().
    bool isCreated() const { return m_created; }

    /// False, logged, when the window hands out no root widget or throws; it then isn't in front.
    bool open();
    void leave();
    void destroy();
    /// Takes a window in front through onExit ... onEnter, so that it reads and says everything anew.
    void refresh();

signals:
    /// The root widget went without the shell's doing while it was in front.
    void rootVanished();

private:
    void adoptRoot(QWidget* root);
    /// Calls the window across the seam; name: of the call.
    bool call(const char* name, const std::function<void()>& work) const;

    const int m_id;
    WindowInterface* const m_window;
    QWidget* const m_area;
    QPointer<QWidget> m_root;
    mutable QString m_name;
    bool m_created = false;
    bool m_inFront = false;
    bool m_destroying = false;
};

} // namespace headunit
