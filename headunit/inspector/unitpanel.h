#pragma once

#include <QStringList>
#include <QWidget>

class QLabel;
class QPushButton;

namespace headunit {

/// Language, power cycle and factory reset, and where the unit's files are. Asks by signals, and shows what
/// it is told. Thread: GUI.
class UnitPanel : public QWidget
{
    Q_OBJECT
public:
    explicit UnitPanel(QWidget* parent);

public slots:
    /// The unit is on, as at first, or off.
    void showPowered(bool on);
    /// lines: one for each application, loaded or not.
    void showApplications(const QStringList& lines);

signals:
    void powerChosen(bool on);
    /// code: one of cm::Language::codes().
    void languageChosen(const QString& code);
    /// The user has confirmed that every setting shall be forgotten.
    void factoryResetChosen();

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* languageBox();
    /// Where the settings are kept, or that they aren't and why.
    void showStore();
    void onResetClicked();

    QPushButton* m_power;
    QPushButton* m_reset;
    QLabel* m_store;
    QLabel* m_applications;
    bool m_powered = true;
};

} // namespace headunit
