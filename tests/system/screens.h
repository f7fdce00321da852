#pragma once

// Every screen of the unit in the conditions in which its looks are tested: built on the reference platform,
// with a store in memory, the unit's style and pinned fonts.

#include <QImage>
#include <QString>
#include <QVector>
#include <QWidget>

#include <memory>

class QApplication;

namespace screens {

/// In the order of the tab bar's ids; the last one is not the hub's and comes without the tab bar.
enum Page { Equalizer, AudioLevels, Crossover, TimeAlignment, Presets, Volumes, MainCrossover, PageCount };

enum Condition {
    Delivered, ///< nothing stored
    Used,      ///< values set: a drawn curve, three different filters, delays
    Lowest,    ///< every value at its lower end
    Highest,   ///< every value at its upper end
    Switched,  ///< switches the other way than delivered, which disables what depends on them
    ConditionCount
};

const char* name(Page page);
const char* name(Condition condition);

/// Columns "page" and "condition", and a row for each page in each condition.
void addScreenRows();

/// Before the application object: platform, fonts, and the log kept quiet.
void prepare();
/// After it: the unit's style.
void dress(QApplication& application);

/// One screen. There is one at a time: the store and the service are process-wide.
class Screen
{
public:
    Screen(Page page, Condition condition, const QString& language = QStringLiteral("en"));
    ~Screen();

    /// What the driver has before him: 1024 x 600 with the tab bar, 1024 x 510 without.
    QWidget* window() const { return m_window.get(); }
    /// The object of that name, an abort that names it if there is none.
    QWidget* child(const char* name) const;
    /// How many times further scroll() can go on; 0 where the page doesn't scroll.
    int furtherViews() const;
    /// Shows the next part of a page that scrolls.
    void scroll();
    QImage picture() const;

private:
    std::unique_ptr<QWidget> m_window;
    Page m_page;
};

/// A text that is seen: a label's or a key's.
struct Text
{
    QWidget* widget;
    QString text;
    QRect rect;  ///< of the widget, in the window; clipped by no ancestor
    QRect drawn; ///< the smallest rectangle of the glyphs' lines, in the window
    bool enabled;
};

/// Every text of a label or key that isn't hidden, has a size and lies at least partly in view.
QVector<Text> texts(const Screen& screen);
/// Where the lines of text stand when they are laid out as the label does it.
QRect drawnRect(const QWidget* widget, const QString& text);

/// The language whose texts are widest on that page.
QString longestLanguage(Page page);

} // namespace screens
