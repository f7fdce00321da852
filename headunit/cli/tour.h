#pragma once

#include <QImage>
#include <QString>

class QWidget;

namespace headunit {

class Shell;

/// Touches the launcher's tile of the audio settings as a driver would, opens them at each of their pages,
/// and saves a picture of 1024 x 600 at every stop. A page counts as shown when its area is neither one plain
/// colour nor what the page before showed. Thread: GUI.
class Tour
{
public:
    /// shell: with its window shown. folder: made when it doesn't exist.
    Tour(Shell* shell, const QString& folder);

    /// Runs the whole tour; the remembered page stays as it is. False at the first stop that fails; error()
    /// then says what couldn't be shown or saved.
    bool run();
    const QString& error() const { return m_error; }

private:
    bool visitLauncher();
    bool visitPages();
    bool touch(QWidget* target);
    bool save(const QString& name, const QImage& picture);
    QImage picture() const;
    bool fail(const QString& text);

    Shell* const m_shell;
    const QString m_folder;
    QString m_error;
};

} // namespace headunit
