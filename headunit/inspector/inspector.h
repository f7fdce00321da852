#pragma once

#include <QWidget>

class QTabWidget;

namespace headunit {

class Shell;

/// The window beside the unit for those who develop with it: what goes on inside, and levers to pull. Panels
/// are tabs, one class each; a further one is added in the constructor. It speaks English, whatever the
/// unit's language. Thread: GUI.
class Inspector : public QWidget
{
    Q_OBJECT
public:
    /// shell: outlives the inspector.
    explicit Inspector(Shell* shell);
    ~Inspector() override;

    QTabWidget* panels() const { return m_panels; }

private:
    QTabWidget* m_panels;
    Q_DISABLE_COPY(Inspector)
};

} // namespace headunit
