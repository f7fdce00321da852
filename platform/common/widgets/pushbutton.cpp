#include "common/pushbutton.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

namespace cm {

namespace {
constexpr int longPressMs = 800;
constexpr int repeatMs = 150;
} // namespace

/// Follows the button's own pressed(), released() and clicked(), so that a press by keyboard or by a screen
/// reader counts like a finger's. The filter only sees where one press ends and the next begins: a finger
/// that slides off the key and back presses it a second time for Qt, but is still the same press.
class PushButtonPrivate : public QObject
{
    Q_OBJECT
public:
    PushButtonPrivate(QPushButton* key, PushButton* owner)
        : QObject(owner)
        , q(owner)
        , m_button(key)
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setSingleShot(true);
        connect(&m_timer, SIGNAL(timeout()), this, SLOT(onHeld()));
        connect(key, SIGNAL(pressed()), this, SLOT(onPressed()));
        connect(key, SIGNAL(released()), this, SLOT(onReleased()));
        connect(key, SIGNAL(clicked()), this, SLOT(onClicked()));
        connect(key, SIGNAL(destroyed()), &m_timer, SLOT(stop()));
        key->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            m_longGiven = false;
            break;
        case QEvent::KeyPress:
            if (!static_cast<QKeyEvent*>(event)->isAutoRepeat())
                m_longGiven = false;
            break;
        case QEvent::Hide:
        case QEvent::EnabledChange:
            m_timer.stop();
            break;
        default:
            break;
        }
        return QObject::eventFilter(watched, event);
    }

private slots:
    void onPressed()
    {
        // An auto-repeating button reports a press again and again while it is down.
        if (!m_timer.isActive())
            m_timer.start(m_longGiven ? repeatMs : longPressMs);
    }

    void onReleased()
    {
        if (!m_button->isDown())
            m_timer.stop();
    }

    void onClicked()
    {
        // While the key is still down, this is an auto-repeating button's repetition, not a release.
        if (!m_button->isDown())
            emit q->shortClicked();
    }

    void onHeld()
    {
        m_timer.start(repeatMs); // before the signal: its receiver may delete the wrapper
        if (m_longGiven) {
            emit q->longPressedRepeat();
        } else {
            m_longGiven = true;
            emit q->longPressed();
        }
    }

private:
    PushButton* q;
    QPointer<QPushButton> m_button;
    QTimer m_timer;
    bool m_longGiven = false; ///< longPressed() was emitted for the press that is going on
};

PushButton::PushButton(QPushButton* button, QObject* parent)
    : QObject(parent)
    , d(nullptr)
{
    if (button)
        d = new PushButtonPrivate(button, this);
    else
        qWarning("PushButton: there is no button to wrap; no press will be reported");
}

PushButton::~PushButton() = default; // d is a child

} // namespace cm

#include "pushbutton.moc"
