#pragma once

#include <QObject>

namespace headunit {

/// Receives what applications post to the application object and says it as signals. One at a time; lives as
/// long as the shell. Thread: GUI.
class FrameworkEvents : public QObject
{
    Q_OBJECT
public:
    explicit FrameworkEvents(QObject* parent = nullptr);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The application in front wants to be left.
    void backRequested();
    /// true: the status bar shall go, false: it shall come back.
    void statusBarHideRequested(bool hide);
};

} // namespace headunit
