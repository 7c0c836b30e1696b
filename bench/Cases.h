#pragma once

#include "bench/Report.h"
#include "bench/Scene.h"

#include <string>
#include <vector>

// What is measured; docs/performance.md tells what each case means. The plug-in is loaded unless its path is
// asked for.

/// Loading, freeing and the size of the library; it must not be loaded yet.
void MeasureLoading(const std::wstring& plugin, const std::wstring& decoder, Report& report);

void MeasurePassThrough(const PluginInstance& instance, const std::wstring& decoder, Report& report);
void MeasureTrace(const PluginLibrary& plugin, Report& report);

/// Needs the decoder library in its folder; the cases below need it gone.
void MeasureTypical(const PluginInstance& instance, Report& report);

/// Many tags and large values.
void MeasureDocuments(const PluginInstance& instance, Report& report);

void MeasurePicture(const PluginInstance& instance, Report& report);

/// How far one document of 100,000 tags raises the most memory that the process ever used, in hundredths of
/// the document's size; for a process of its own.
int MeasureMemory(const std::wstring& plugin);

/// Milliseconds: style sheets have no yardstick.
void MeasureTransformations(const PluginInstance& instance, const std::vector<std::wstring>& styleSheets);
