// The least that a program can do which looks like the unit: one text in its font and one picture of its
// size, painted once. What the unit's start costs is compared with this rather than with nothing, since
// loading Qt, the fonts and a picture is a price that any program pays.
#include "bench/headunit/mark.h"

#include <QApplication>
#include <QLabel>
#include <QPaintEvent>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdlib>

namespace {

class Window : public QWidget
{
public:
    Window()
    {
        setFixedSize(1024, 600);
        auto* rows = new QVBoxLayout(this);
        auto* text = new QLabel(QStringLiteral("AUDIO"), this);
        QFont font(QStringLiteral("Noto Sans"), 11);
        font.setFamilies({QStringLiteral("Noto Sans"), QStringLiteral("Noto Sans Arabic UI"),
                          QStringLiteral("Noto Sans CJK SC"), QStringLiteral("Noto Sans CJK JP")});
        text->setFont(font);
        auto* picture = new QLabel(this);
        picture->setPixmap(QPixmap(QStringLiteral(":/vexa_m5qx_settingicon_ext/bg_cross.png")));
        rows->addWidget(text);
        rows->addWidget(picture);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        // The labels paint after this; the loop's next turn has the whole frame behind it.
        QTimer::singleShot(0, this, [] {
            instructionsMark("smallest-painted");
            std::_Exit(0);
        });
    }
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Window window;
    window.show();
    return QApplication::exec();
}
