#include "headunit/inspector/filedialog.h"

namespace headunit {

QFileDialog* newFileDialog(QWidget* parent, const QString& title)
{
    auto* dialog = new QFileDialog(parent, title);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // Whoever can reach the pointer must not be able to delete or rename a file; a desk's own dialog doesn't
    // know this option.
    dialog->setOptions(QFileDialog::ReadOnly | QFileDialog::DontUseNativeDialog);
    return dialog;
}

} // namespace headunit
