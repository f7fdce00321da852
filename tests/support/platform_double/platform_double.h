#pragma once

#include "tests/support/platform_double/lines.h"

#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariant>

class QPushButton;

namespace cm {
class PushButton;
class ScrollManage;
} // namespace cm
namespace settings {
class CustomSlider_2;
}

/// The recording platform: every operation of platform/interface leaves one line and keeps what its header
/// says of odd arguments; reads answer from values that the test sets. What would come by itself on a unit
/// comes when the test says so: signals (no operation emits one), long presses, and what the audio service
/// stores.
///
/// Lines read `Class.operation(arguments)`; strings are quoted, flags are true/false:
///
///     SettingsExe.getValue("AudioSetting_Page", 1)      AudioService.setEQType(6, true)
///     SettingsFunc.setValue("subwooferLevel", 11, 139, true)
namespace platform_double {

enum Kind : int {
    Audio = 1 << 0,   ///< operations of the audio service that do something
    Write = 1 << 1,   ///< writes to the store
    Read = 1 << 2,    ///< reads of the store and of the audio service
    Beep = 1 << 3,    ///< the MCU's beep
    Station = 1 << 4, ///< the transfer station
    Window = 1 << 5,  ///< the base window
    Text = 1 << 6,    ///< translations
    Widget = 1 << 7,  ///< platform widgets made, and scrolling
    Actions = Audio | Write | Beep | Station | Window,
    All = 0xff,
};

/// What the audio service answers. Its own operations change it too, so that a later read sees them.
struct AudioState
{
    int eqType = 0;
    int balance = 0;
    int fader = 0;
    int customEq[13] = {};
};

/// Forgets lines, stored values, texts, events and messages; the audio state is the default one.
void reset();
/// The recorded lines of these kinds, in order. Forgets all lines.
QStringList takeCalls(int kinds = Actions);
/// For the double's own files.
void record(Kind kind, const QString& line);

void setStored(const QString& key, const QVariant& value);
/// Invalid when the key is absent.
QVariant stored(const QString& key);
/// Every key that was read or written since reset(), as `path key default` with path Func or Exe, each once:
/// "Exe AudioSetting_Page 1 R", "Func subwooferLevel 11 W true".
QStringList accesses();

AudioState& audio();
/// Texts are "T<id>" unless set here.
void setText(int id, const QString& text);

void emitEQType(int type);
void emitVolumeChanged(bool muted, int level, int channel);

/// Living wrappers and sliders in the order of their making.
QList<cm::PushButton*> pushButtons();
QPushButton* buttonOf(cm::PushButton* wrapper);
/// Null when that button has no wrapper.
cm::PushButton* wrapperOf(QPushButton* button);
QList<settings::CustomSlider_2*> sliders();
int offsetOf(settings::CustomSlider_2* slider);
QColor hintColorOf(settings::CustomSlider_2* slider);
QList<cm::ScrollManage*> scrollManagers();

/// What cm::BaseWindow::keyEvent() answers.
void setKeyEventResult(int result);

/// Number of back requests (touch code 15, x = y = -1, payload checked) that were posted to the application
/// object; delivers pending posted events first and forgets them.
int takeBackRequests();
/// Values of the status bar requests, in order.
QList<bool> takeStatusBarRequests();

/// Log lines since the last call: level letter (D, W, C), a blank, the text.
QStringList takeLog();
/// Source files of these lines as the log context names them.
QStringList takeLogFiles();

} // namespace platform_double
