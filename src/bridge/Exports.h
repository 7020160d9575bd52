// The library's whole inward interface: 19 plain functions that the host's
// macro project declares by name and calls.
//
// Provides: the exported C symbols, and the internal function of the same
// name in namespace velmora that each one forwards to.
// Text arguments are NUL-terminated UTF-8, owned by the caller and read only
// during the call. Nothing is returned and nothing escapes: an exception
// inside is logged and swallowed at the boundary.
#pragma once

namespace velmora {

void initializeEventMonitor();
void updateShortcutEnabledState();
void activateVelmoraTab();
void triggerAssistant(const char* selectedJSON, const char* nonSelectedJSON);
void triggerMissedAssistant(const char* missedShortcut);
void openShortcutsTaskpane();
void openAssistantTaskpane();
void openIconTaskpane();
void openImageTaskpane();
void openColorBarTaskpane();
void openSlideLibraryTaskpane();
void openTemplateLibraryTaskpane();
void refreshSlideLibraryTaskpane();
void triggerColorThemeRefresh();
void initializeTablesOverlay(const char* rows, const char* columns, bool headerRow, bool headerColumn,
                             bool separatorLines, bool pasteContent, bool useReferenceShape);
void initializeLinesOverlay();
void initializeTaggingOverlay(const char* slidesFileName);
void initializeLoginOverlay();
void initializeFreeTrialOverlay();

}  // namespace velmora
