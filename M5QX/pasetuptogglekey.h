#pragma once

#include <QObject>
#include <QString>

class QLabel;
class QPushButton;

/// Shows an on/off state as the picture of a key and, where there is one, as the text of the label beside it.
/// It only shows: the state is its owner's, and a click on the key goes past it. Key and label stay the
/// form's and must outlive the last call. It has no parent; whoever makes it deletes it. Thread: GUI.
class PaSetupToggleKey : public QObject
{
    Q_OBJECT
public:
    /// key: not null. label may be null: then only the picture changes.
    PaSetupToggleKey(QPushButton* key, QLabel* label, const QString& onText, const QString& offText);
    /// A key without a label.
    explicit PaSetupToggleKey(QPushButton* key);

    /// style: 1 has an on picture of its own, any other number shows the usual one. Off looks the same in
    /// every style.
    void showToggleKey(bool on, int style);
    /// The same with the usual pictures.
    void showToggleSWKey(bool on);
    /// Texts for the next showToggle...(); the label keeps what it shows until then.
    void setLabelsString(const QString& onText, const QString& offText);

private:
    void show(const char* image, const QString& text);

    QPushButton* m_key;
    QLabel* m_label;
    QString m_onText;
    QString m_offText;
};
