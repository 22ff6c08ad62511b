// The picture of vsps echo.
#pragma once

#include "echo/echo_meter.h"
#include "plot/gnuplot.h"

// Levels of far end, near end and output above, the enhancement below, double talk shaded.
std::string drawEcho(const Gnuplot& gnuplot, const std::string& title, const EchoTrace& trace, bool suppresses);
