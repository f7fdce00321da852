#pragma once

#include "common/settingstable.h"

#include <QVariant>

namespace headunit {

/// What the shell knows of the audio settings: their window, and where they keep which page they show. They
/// show that page whenever they are opened.

constexpr int audioWindowId = 33;
constexpr mem::Setting audioPageSetting = mem::settingOf("AudioSetting_Page");
constexpr int audioPageCount = audioPageSetting.largest + 1;

/// Lets the audio settings show another page than the remembered one: the page that is remembered when this
/// object is made is put back, durably, when it goes. Thread: GUI.
class RememberedPage
{
public:
    RememberedPage();
    ~RememberedPage();

    /// The page that the audio settings show when they are opened next; 0 .. audioPageCount - 1.
    void lookAt(int page);

private:
    const QVariant m_remembered; ///< invalid: none
    Q_DISABLE_COPY(RememberedPage)
};

} // namespace headunit
