// The start of benchmarks that have windows.
#pragma once

#include <QtGlobal>

#include "bench/measure.h"
#include "framework/qt/application.h"

namespace permora::bench {

// Runs `measure` with windows that nobody sees: the toolkit paints into memory. What main returns.
inline int MeasureWindows(int argc, char** argv, void (*measure)()) {
    Begin(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QtApplication application(argc, argv);
    measure();
    return ExitCode();
}

}  // namespace permora::bench
