// Pictures, drawn by the program gnuplot.
#pragma once

#include <string>

// A plot that goes to a file; the extension says whether it is PNG, SVG or PDF. On standard output it is PNG.
class Gnuplot {
  public:
    // Ends with a FileError if the extension is unknown or gnuplot is not there.
    explicit Gnuplot(std::string file);

    // The bytes of the picture that the commands draw, width by height in pixels (1/120 inch in PDF).
    std::string draw(const std::string& commands, int width, int height) const;

  private:
    std::string file_, kind_;
};

// A string constant of gnuplot.
std::string quoted(const std::string& text);

// A named block of data among the commands, one line for each point.
std::string dataBlock(const std::string& name, const std::string& data);

// Commands that every picture begins with.
extern const char* const kPlotStyle;
