#pragma once

#include <QMetaMethod>
#include <QObject>

#include <iterator>

namespace audiosetting {

/// Numbers by which the store and the tab bar know the hub's pages.
enum Page : int {
    EQSettingPage = 0,
    AudioLevelsPage = 1,
    CrossoverSettingsPage = 2,
    TimeAlignmentPage = 3,
    EQPresetPage = 4,
    VolumeLevelPage = 5,
    PageCount = 6,
};

struct PageRow
{
    Page page;
    const char* signal; ///< of the tab bar: asks for the page
    const char* slot;   ///< of the hub: shows it
};

// clang-format off
const PageRow pageRows[] = {
    {EQSettingPage,         SIGNAL(triShowEQSettingPage()),        SLOT(onShowEQSettingPage())},
    {AudioLevelsPage,       SIGNAL(triShowAudioLevelsPage()),      SLOT(onShowAudioLevelsPage())},
    {CrossoverSettingsPage, SIGNAL(triShowCrossoverSettingPage()), SLOT(onShowCrossoverSettingsPage())},
    {TimeAlignmentPage,     SIGNAL(triShowTimeAlignmentpage()),    SLOT(onShowTimeAlignmentPage())},
    {EQPresetPage,          SIGNAL(triShowEQPreset()),             SLOT(onShowEQPresetPage())},
    {VolumeLevelPage,       SIGNAL(triVolumeLevel()),              SLOT(onShowVolumeLevelPage())},
};
// clang-format on
static_assert(std::size(pageRows) == PageCount, "one row a page");

/// Calls a page's signal or slot on its object (not null); a number that is no page calls nothing. Thread:
/// GUI.
inline void invokeOfPage(QObject* object, const char* PageRow::*method, int page)
{
    for (const PageRow& row : pageRows) {
        if (row.page != page)
            continue;
        const char* signature = row.*method + 1; // behind the digit by which Qt tells signals from slots
        const QMetaObject* meta = object->metaObject();
        meta->method(meta->indexOfMethod(signature)).invoke(object, Qt::DirectConnection);
    }
}

} // namespace audiosetting
