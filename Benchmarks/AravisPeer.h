#pragma once

#include <benchmark/benchmark.h>

#include <string>

/// The same work done by Aravis, an independent client of such cameras: over its own fake camera, with its
/// cache of register values switched on.

void MeasureAravisLoad(benchmark::State& state, const std::string& xml);
void MeasureAravisRead(benchmark::State& state, const std::string& xml, const char* feature);
