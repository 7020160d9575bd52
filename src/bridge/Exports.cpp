// The exported symbols. Each forwards at once to its internal namesake and
// keeps every exception on this side of the boundary.

#include "bridge/Exports.h"

#include <cstdint>

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
// The macro language's True is -1: the flags arrive as bytes of any value,
// which a C++ bool must not hold, so they are read as bytes and tested
// against zero.
VELMORA_EXPORT void initializeTablesOverlay(const char* rows, const char* columns, std::uint8_t headerRow,
                                            std::uint8_t headerColumn, std::uint8_t separatorLines,
                                            std::uint8_t pasteContent, std::uint8_t useReferenceShape) {
    guarded(__func__, [&] {
        velmora::initializeTablesOverlay(rows, columns, headerRow != 0, headerColumn != 0, separatorLines != 0,
                                         pasteContent != 0, useReferenceShape != 0);
    });
}
VELMORA_EXPORT void initializeLinesOverlay() { guarded(__func__, [] { velmora::initializeLinesOverlay(); }); }
VELMORA_EXPORT void initializeTaggingOverlay(const char* SlidesFileName) {
    guarded(__func__, [&] { velmora::initializeTaggingOverlay(SlidesFileName); });
}
VELMORA_EXPORT void initializeLoginOverlay() { guarded(__func__, [] { velmora::initializeLoginOverlay(); }); }
VELMORA_EXPORT void initializeFreeTrialOverlay() { guarded(__func__, [] { velmora::initializeFreeTrialOverlay(); }); }
