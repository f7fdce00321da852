#pragma once

#include <QFileDialog>

namespace headunit {

/// Asks the user for a file and changes none: what is chosen is told by the dialog's signals. It deletes
/// itself when it is closed. Thread: GUI.
QFileDialog* newFileDialog(QWidget* parent, const QString& title);

} // namespace headunit
