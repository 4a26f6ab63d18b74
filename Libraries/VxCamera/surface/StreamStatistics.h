#pragma once

class ParameterList;
class VxStreamImpl;

/// Adds the features of a stream receiver to its list: statistics, where it listens, and the command "Reset".
/// @param stream  borrowed by the features; while it is closed, numbers are 0 and texts empty
void ListStreamStatistics(VxStreamImpl& stream, ParameterList& list);
