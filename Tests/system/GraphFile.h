#pragma once

#include "vxgrab/ComPtr.h"

#include <windows.h>

#include <strmif.h>

#include <filesystem>

// A saved filter graph with one capture filter: a compound file with the stream "ActiveMovieGraph", as graph
// editors write it. The filter graph of Wine 8.0 does not save itself (it has no IPersistStream), so the
// stream's content is made here, of what a graph asks of a filter: its class and its data, by IPersistStream.
// The subtype of the connection follows.

/// Writes a new file.
HRESULT SaveGraph(const std::filesystem::path& file, IBaseFilter& source, const GUID& subtype);

/// Reads a file; COM creates the filter by its class and lets it load its data.
HRESULT LoadGraph(const std::filesystem::path& file, vxgrab::ComPtr<IBaseFilter>& source, GUID& subtype);
