#pragma once

#include <QScopedPointer>
#include <QWidget>

class Ui_SetupPageKeyWidget;

/// A strip with a previous-page key at its top and a next-page key below, laid over a page that scrolls. It
/// scrolls nothing itself: a press goes to the platform's transfer station, and whichever page is visible
/// answers. Thread: GUI.
class SetupPageKeyWidget : public QWidget
{
    Q_OBJECT
public:
    explicit SetupPageKeyWidget(QWidget* parent);
    ~SetupPageKeyWidget() override;

    /// Moves the next-page key up by height pixels from where it is now; the strip keeps its size, and a
    /// second call moves the key again.
    void resizeHeightofKeyWidget(int height);
    /// What a screen reader calls the keys: the name of the page that they turn, with a direction.
    void setPageName(const QString& name);

public slots:
    void on_Key_prev_page_clicked();
    void on_Key_next_page_clicked();

protected:
    /// Nothing is to be done when the strip appears, not even what QWidget would do.
    void showEvent(QShowEvent* event) override;

private:
    QScopedPointer<Ui_SetupPageKeyWidget> ui;
};
