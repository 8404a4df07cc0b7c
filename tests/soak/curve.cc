// A line through points, and a picture of them.
#include "soak/curve.h"

#include <algorithm>
#include <sstream>

namespace morvik::test {
namespace {

constexpr double kMebibyte = 1048576;

// The picture, in its own units.
constexpr double kLeft = 60;
constexpr double kTop = 20;
constexpr double kWidth = 800;
constexpr double kHeight = 360;
constexpr double kLineHeight = 18;
constexpr const char* kColors[] = {"#1f77b4", "#d62728", "#2ca02c",
                                   "#9467bd", "#ff7f0e", "#17becf"};

// The top of the scale.
double highest(const std::vector<Curve>& curves) {
  double most = 1;
  for (const Curve& curve : curves)
    for (const Curve::Point& point : curve.points()) most = std::max(most, point.memory.own);
  return most * 1.1;
}

void drawAxes(std::ostream& svg, double most) {
  svg << "<rect x='" << kLeft << "' y='" << kTop << "' width='" << kWidth << "' height='" << kHeight
      << "' fill='none' stroke='#888'/>\n"
      << "<text x='4' y='" << kTop + 10 << "'>" << static_cast<int>(most) << " MiB</text>\n"
      << "<text x='4' y='" << kTop + kHeight << "'>0</text>\n";
}

void drawCurve(std::ostream& svg, const Curve& curve, double most, const char* color) {
  const double all = static_cast<double>(std::max(curve.points().back().done, 1L));
  svg << "<polyline fill='none' stroke='" << color << "' points='";
  for (const Curve::Point& point : curve.points()) {
    svg << kLeft + kWidth * static_cast<double>(point.done) / all << ','
        << kTop + kHeight * (1 - point.memory.own / most) << ' ';
  }
  svg << "'/>\n";
}

void drawName(std::ostream& svg, const Curve& curve, std::size_t index, const char* color) {
  svg << "<text x='" << kLeft << "' y='"
      << kTop + kHeight + kLineHeight * static_cast<double>(index + 1) << "' fill='" << color
      << "'>" << curve.points().back().done << ' ' << curve.what() << "</text>\n";
}

}  // namespace

double Curve::slope() const {
  double x = 0, y = 0, xx = 0, xy = 0;
  const auto count = static_cast<double>(points_.size() - warm());
  for (std::size_t i = warm(); i < points_.size(); ++i) {
    const auto done = static_cast<double>(points_[i].done);
    const double bytes = points_[i].memory.own * kMebibyte;
    x += done;
    y += bytes;
    xx += done * done;
    xy += done * bytes;
  }
  const double spread = count * xx - x * x;
  return spread > 0 ? (count * xy - x * y) / spread : 0;
}

double Curve::rise() const {
  const auto middle = points_.begin() + static_cast<std::ptrdiff_t>(points_.size() / 2);
  const auto highestOf = [](auto from, auto to) {
    return std::max_element(from, to,
                            [](const Point& one, const Point& other) {
                              return one.memory.own < other.memory.own;
                            })
        ->memory.own;
  };
  return highestOf(middle, points_.end()) - highestOf(points_.begin(), middle);
}

std::string picture(const std::vector<Curve>& curves) {
  const double most = highest(curves);
  std::ostringstream svg;
  svg << "<svg xmlns='http://www.w3.org/2000/svg' font-family='sans-serif' font-size='12' width='"
      << kLeft + kWidth + kTop << "' height='"
      << kTop * 2 + kHeight + kLineHeight * static_cast<double>(curves.size()) << "'>\n"
      << "<rect width='100%' height='100%' fill='white'/>\n";
  drawAxes(svg, most);
  for (std::size_t i = 0; i < curves.size(); ++i) {
    const char* color = kColors[i % std::size(kColors)];
    drawCurve(svg, curves[i], most, color);
    drawName(svg, curves[i], i, color);
  }
  svg << "</svg>\n";
  return svg.str();
}

}  // namespace morvik::test
