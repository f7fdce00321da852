#pragma once

#include <QImage>
#include <QString>

class QWidget;

namespace headunit {

class Shell;

/// Touches its way through the unit as a driver would - launcher tile, then each key of the tab bar - and
/// saves a picture of 1024 x 600 at every stop. A page counts as shown when its key is checked, the
/// application has noted it as the last page, and the page area is not one plain colour. Thread: GUI.
class Tour
{
public:
    /// shell: with its window shown. folder: made when it doesn't exist.
    Tour(Shell* shell, const QString& folder);

    /// Runs the whole tour and puts the remembered page back. False at the first stop that fails; error()
    /// then says what couldn't be shown or saved.
    bool run();
    const QString& error() const { return m_error; }

private:
    bool visitLauncher();
    bool visitPages();
    bool visitPage(int page);
    bool touch(QWidget* target);
    bool save(const QString& name, const QImage& picture);
    QImage picture() const;
    bool fail(const QString& text);

    Shell* const m_shell;
    const QString m_folder;
    QString m_error;
};

} // namespace headunit
