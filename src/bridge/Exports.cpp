// The exported symbols. Each forwards at once to its internal namesake and
// keeps every exception on this side of the boundary.

#include "bridge/Exports.h"

#include "platform/Platform.h"

#define VELMORA_EXPORT extern "C" __attribute__((visibility("default")))

using velmora::platform::guarded;

VELMORA_EXPORT void initializeEventMonitor() { guarded(__func__, [] { velmora::initializeEventMonitor(); }); }
VELMORA_EXPORT void updateShortcutEnabledState() { guarded(__func__, [] { velmora::updateShortcutEnabledState(); }); }
VELMORA_EXPORT void activateVelmoraTab() { guarded(__func__, [] { velmora::activateVelmoraTab(); }); }
VELMORA_EXPORT void triggerAssistant(const char* SelectedJSON, const char* NonSelectedJSON) {
    guarded(__func__, [&] { velmora::triggerAssistant(SelectedJSON, NonSelectedJSON); });
}
VELMORA_EXPORT void triggerMissedAssistant(const char* MissedShortcut) {
    guarded(__func__, [&] { velmora::triggerMissedAssistant(MissedShortcut); });
}
VELMORA_EXPORT void openShortcutsTaskpane() { guarded(__func__, [] { velmora::openShortcutsTaskpane(); }); }
VELMORA_EXPORT void openAssistantTaskpane() { guarded(__func__, [] { velmora::openAssistantTaskpane(); }); }
VELMORA_EXPORT void openIconTaskpane() { guarded(__func__, [] { velmora::openIconTaskpane(); }); }
VELMORA_EXPORT void openImageTaskpane() { guarded(__func__, [] { velmora::openImageTaskpane(); }); }
VELMORA_EXPORT void openColorBarTaskpane() { guarded(__func__, [] { velmora::openColorBarTaskpane(); }); }
VELMORA_EXPORT void openSlideLibraryTaskpane() { guarded(__func__, [] { velmora::openSlideLibraryTaskpane(); }); }
VELMORA_EXPORT void openTemplateLibraryTaskpane() { guarded(__func__, [] { velmora::openTemplateLibraryTaskpane(); }); }
VELMORA_EXPORT void refreshSlideLibraryTaskpane() { guarded(__func__, [] { velmora::refreshSlideLibraryTaskpane(); }); }
VELMORA_EXPORT void triggerColorThemeRefresh() { guarded(__func__, [] { velmora::triggerColorThemeRefresh(); }); }
VELMORA_EXPORT void initializeTablesOverlay(const char* rows, const char* columns, bool headerRow, bool headerColumn,
                                            bool separatorLines, bool pasteContent, bool useReferenceShape) {
    guarded(__func__, [&] {
        velmora::initializeTablesOverlay(rows, columns, headerRow, headerColumn, separatorLines, pasteContent,
                                         useReferenceShape);
    });
}
VELMORA_EXPORT void initializeLinesOverlay() { guarded(__func__, [] { velmora::initializeLinesOverlay(); }); }
VELMORA_EXPORT void initializeTaggingOverlay(const char* SlidesFileName) {
    guarded(__func__, [&] { velmora::initializeTaggingOverlay(SlidesFileName); });
}
VELMORA_EXPORT void initializeLoginOverlay() { guarded(__func__, [] { velmora::initializeLoginOverlay(); }); }
VELMORA_EXPORT void initializeFreeTrialOverlay() { guarded(__func__, [] { velmora::initializeFreeTrialOverlay(); }); }
