#include "platform/common/widgets/unitstyle.h"

#include "platform/common/texts/language.h"
#include "platform/common/widgets/focusring.h"
#include "platform/common/widgets/palette.h"

#include <QAbstractButton>
#include <QApplication>
#include <QButtonGroup>
#include <QEvent>
#include <QFileInfo>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QStyleFactory>
#include <QStyleOption>

#include <dlfcn.h>

namespace cm {

namespace {

constexpr int baseSize = 11; ///< pt; fills the lowest captions, 20 px high, without being cut
constexpr int faceRadius = 8;
constexpr int ringWidth = 3;
constexpr int scrollMargin = 20; ///< px above or below what the keyboard scrolls to

constexpr char latinFamily[] = "Noto Sans"; // with Greek and Cyrillic
constexpr char arabicFamily[] =
    "Noto Sans Arabic UI"; // lines as high as Latin ones; without "UI" two don't fit a tab
constexpr char chineseFamily[] = "Noto Sans CJK SC";
constexpr char japaneseFamily[] = "Noto Sans CJK JP";

/// Chinese and Japanese share code points that they draw differently, so the language's own comes first.
QStringList familiesOf(const QString& code)
{
    return code == QLatin1String("ja")
               ? QStringList{latinFamily, arabicFamily, japaneseFamily, chineseFamily}
               : QStringList{latinFamily, arabicFamily, chineseFamily, japaneseFamily};
}

/// Says once which family isn't installed; fontconfig then picks some other one.
void tellMissingFamilies()
{
    static bool told = false;
    if (told)
        return;
    told = true;
    const QStringList installed = QFontDatabase().families();
    for (const QString& family : familiesOf(QStringLiteral("en")))
        if (!installed.contains(family))
            qWarning("UnitStyle: the font family \"%s\" is not installed (packages fonts-noto-core, "
                     "fonts-noto-cjk)",
                     qPrintable(family));
}

/// Lets Qt find the icon engine, which lies beside this library.
void addPictureIcons()
{
    Dl_info library;
    if (dladdr(reinterpret_cast<const void*>(&addPictureIcons), &library))
        QCoreApplication::addLibraryPath(QFileInfo(QFile::decodeName(library.dli_fname)).absolutePath());
}

void applyFont(QApplication& application, const QString& code)
{
    // Also for those who name the Latin family alone.
    QFont::removeSubstitutions(latinFamily);
    QFont::insertSubstitutions(latinFamily, familiesOf(code).mid(1));
    application.setFont(UnitStyle::font(code));
}

bool has(const QIcon& icon, QIcon::Mode mode, QIcon::State state)
{
    return !icon.availableSizes(mode, state).isEmpty();
}

/// The picture that a key shows. Down: Selected, in the Off state if the form put it there, else in the On
/// state (two preset tiles have it there); a form without a pressed picture keeps the one of its state.
QPixmap picture(const QStyleOptionButton& key, const QWidget* widget)
{
    QIcon::State state = key.state & QStyle::State_On ? QIcon::On : QIcon::Off;
    QIcon::Mode mode = QIcon::Normal;
    if (key.state & QStyle::State_Sunken) {
        if (has(key.icon, QIcon::Selected, QIcon::Off)) {
            mode = QIcon::Selected;
            state = QIcon::Off;
        } else if (has(key.icon, QIcon::Selected, QIcon::On)) {
            mode = QIcon::Selected;
            state = QIcon::On;
        }
    }
    QWindow* window = widget ? widget->window()->windowHandle() : nullptr;
    return key.icon.pixmap(window, key.iconSize, mode, state);
}

/// Marks the keys that the keyboard stops at.
constexpr char tabStopProperty[] = "unitStyleTabStop";

/// Qt leaves an exclusive group one tab stop, the key that had the focus last; the arrow keys would go on,
/// and each step would also act. On this unit every key is looked at before it is worked.
void restoreTabStops(const QWidget* window)
{
    for (QAbstractButton* key : window->findChildren<QAbstractButton*>()) {
        if (key->group() && key->group()->exclusive() && key->property(tabStopProperty).toBool())
            key->setFocusPolicy(Qt::FocusPolicy(key->focusPolicy() | Qt::TabFocus));
    }
}

/// A scroll area does so by itself only for steps within it, not for one that enters it from outside.
void bringIntoView(QWidget* focused)
{
    for (QWidget* parent = focused->parentWidget(); parent; parent = parent->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(parent))
            area->ensureWidgetVisible(focused, 0, scrollMargin);
    }
}

} // namespace

UnitStyle::UnitStyle()
    : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion")))
{
}

void UnitStyle::install(QApplication& application)
{
    tellMissingFamilies();
    addPictureIcons();
    application.setStyle(new UnitStyle);
    application.setPalette(palette());
    applyFont(application, Language::instance()->current());
    // The geometry is fixed and never mirrored; a label turns its own text round where it is Arabic.
    application.setLayoutDirection(Qt::LeftToRight);
    QObject::connect(Language::instance(), &Language::changed, &application,
                     [&application](const QString& code) { applyFont(application, code); });
}

QFont UnitStyle::font(const QString& code)
{
    QFont font(QLatin1String(latinFamily), baseSize);
    font.setFamilies(familiesOf(code));
    return font;
}

QPalette UnitStyle::palette()
{
    using namespace palette;
    struct Row
    {
        QPalette::ColorRole role;
        QRgb active, disabled;
    };
    // clang-format off
    static constexpr Row paletteRows[] = {
        {QPalette::Window,          page,         page},
        {QPalette::WindowText,      ink,          inkDim},
        {QPalette::Base,            well,         well},
        {QPalette::AlternateBase,   panel,        panel},
        {QPalette::Text,            ink,          inkDim},
        {QPalette::PlaceholderText, inkDim,       inkDim},
        {QPalette::Button,          panel,        panel},
        {QPalette::ButtonText,      ink,          inkDim},
        {QPalette::BrightText,      accentBright, inkDim},
        {QPalette::Highlight,       accentBright, lineStrong},
        {QPalette::HighlightedText, well,         inkDim},
        {QPalette::Link,            accentBright, inkDim},
        {QPalette::LinkVisited,     accentBright, inkDim},
        {QPalette::ToolTipBase,     panel,        panel},
        {QPalette::ToolTipText,     ink,          inkDim},
        {QPalette::Light,           lineStrong,   lineStrong},
        {QPalette::Midlight,        lineStrong,   lineStrong},
        {QPalette::Mid,             line,         line},
        {QPalette::Dark,            well,         well},
        {QPalette::Shadow,          well,         well},
    };
    // clang-format on
    QPalette all;
    for (const Row& row : paletteRows) {
        all.setColor(QPalette::All, row.role, QColor(row.active));
        all.setColor(QPalette::Disabled, row.role, QColor(row.disabled));
    }
    return all;
}

void UnitStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                            const QWidget* widget) const
{
    const auto* key = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (!key ||
        (element != CE_PushButton && element != CE_PushButtonBevel && element != CE_PushButtonLabel)) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    if (element == CE_PushButton) {
        drawControl(CE_PushButtonBevel, key, painter, widget);
        drawControl(CE_PushButtonLabel, key, painter, widget);
        if (key->state & State_HasFocus)
            drawFocusRing(*key, painter, ringWidth, faceRadius);
        return;
    }

    painter->save();
    if (!(key->state & State_Enabled))
        painter->setOpacity(painter->opacity() * palette::disabledOpacity);
    if (element == CE_PushButtonBevel) {
        // A key with a picture is its picture; one with a text alone needs a face to be seen as a key.
        if (key->icon.isNull() && !(key->features & QStyleOptionButton::Flat)) {
            const bool lit = key->state & (State_Sunken | State_On);
            painter->setRenderHint(QPainter::Antialiasing);
            painter->setPen(Qt::NoPen);
            painter->setBrush(QColor(lit ? palette::accentDeep : palette::panel));
            painter->drawRoundedRect(QRectF(key->rect).adjusted(1, 1, -1, -1), faceRadius, faceRadius);
        }
    } else {
        // Dimmed as a whole, so that Qt needs no grey picture of its own making.
        QStyleOptionButton shown = *key;
        shown.state |= State_Enabled;
        shown.state &= ~(State_HasFocus | State_MouseOver);
        shown.palette.setCurrentColorGroup(QPalette::Active);
        if (!key->icon.isNull())
            shown.icon = QIcon(picture(*key, widget));
        QProxyStyle::drawControl(element, &shown, painter, widget);
    }
    painter->restore();
}

void UnitStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const
{
    if (element == PE_FrameFocusRect)
        drawFocusRing(*option, painter, ringWidth, faceRadius);
    else
        QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void UnitStyle::drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette,
                             bool enabled, const QString& text, QPalette::ColorRole role) const
{
    // Qt cuts what a line higher than its room draws outside that, though there may be place for it: margins
    // that centre an accent or a tail would take its end away. The widget's edge still cuts.
    const int line = flags & Qt::AlignVCenter ? painter->fontMetrics().height() : 0;
    QProxyStyle::drawItemText(painter, rect.adjusted(0, -line, 0, line), flags, palette, enabled, text, role);
}

int UnitStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    switch (metric) {
    case PM_ButtonShiftHorizontal: // a key that is down shows another picture; it doesn't move
    case PM_ButtonShiftVertical:
    case PM_ButtonDefaultIndicator:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int UnitStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                         QStyleHintReturn* returnData) const
{
    switch (hint) {
    case SH_Button_FocusPolicy: // the keyboard reaches every control; a touch takes no focus
        return Qt::TabFocus;
    case SH_Slider_AbsoluteSetButtons:
        return Qt::LeftButton;
    case SH_UnderlineShortcut: // the unit has no shortcuts, but a preset named R&B
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

void UnitStyle::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    auto* key = qobject_cast<QPushButton*>(widget);
    if (!key)
        return;
    key->setAttribute(Qt::WA_Hover, false); // a finger doesn't hover
    if (key->focusPolicy() == Qt::StrongFocus)
        key->setFocusPolicy(Qt::TabFocus);
    if (key->focusPolicy() & Qt::TabFocus)
        key->setProperty(tabStopProperty, true);
}

void UnitStyle::polish(QApplication* application)
{
    QProxyStyle::polish(application);
    application->installEventFilter(this);
}

void UnitStyle::unpolish(QApplication* application)
{
    application->removeEventFilter(this);
    QProxyStyle::unpolish(application);
}

bool UnitStyle::eventFilter(QObject* watched, QEvent* event)
{
    if ((event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin) &&
        watched->isWidgetType()) {
        QWidget* window = static_cast<QWidget*>(watched)->window();
        if (window->testAttribute(Qt::WA_KeyboardFocusChange)) {
            window->setAttribute(Qt::WA_KeyboardFocusChange, false);
            if (QWidget* focused = window->focusWidget())
                focused->update();
        }
    }
    if (event->type() == QEvent::FocusIn && watched->isWidgetType()) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason)
            bringIntoView(static_cast<QWidget*>(watched));
    }
    if (event->type() == QEvent::KeyPress && watched->isWidgetType()) {
        const int pressed = static_cast<QKeyEvent*>(event)->key();
        if (pressed == Qt::Key_Tab || pressed == Qt::Key_Backtab)
            restoreTabStops(static_cast<QWidget*>(watched)->window());
    }
    return QProxyStyle::eventFilter(watched, event);
}

} // namespace cm
