// Scenes as text, one operation a line, drawn on whatever is behind Canvas: the library's contexts and, on this
// machine, cairo. Nothing of the project is needed to read them.
#pragma once

#include <cmath>
#include <cstdint>
#include <istream>
#include <sstream>
#include <string>
#include <vector>

namespace pictures {

struct Stop {
  double offset;
  std::uint32_t color;
};
using Numbers = std::vector<double>;
struct Six {
  double a = 1, b = 0, c = 0, d = 1, e = 0, f = 0;
};

constexpr int kWidth = 160;
constexpr int kHeight = 120;

// Each answers whether it was done.
class Canvas {
 public:
  virtual ~Canvas() = default;
  // Colours, lines and paths: `name` and its numbers, see scenes.py.
  virtual bool apply(const std::string& name, const Numbers& numbers) = 0;
  virtual bool image(const std::string& kind, int width, int height, const Six& place) = 0;
  virtual bool stencil(int width, int height, const Six& place) = 0;
  virtual bool tile(const std::string& kind, int width, int height, const Six& place) = 0;
  virtual bool mask(const std::string& kind, int width, int height, const Six& place) = 0;
  // Four places: axial; six: radial.
  virtual bool gradient(bool isForStrokes, const Numbers& places, unsigned extend, const std::vector<Stop>& stops) = 0;
  virtual bool text(const std::string& font, double size, const Six& place, const std::string& ascii, bool isClip) = 0;
};

// A made picture's pixel, 0xAARRGGBB.
inline std::uint32_t pixelOf(const std::string& kind, int width, int height, int x, int y) {
  const double u = (x + 0.5) / width;
  const double v = (y + 0.5) / height;
  const auto level = [](double part) {
    return static_cast<std::uint32_t>(std::lround(std::fmin(std::fmax(part, 0), 1) * 255));
  };
  const auto color = [&](double a, double r, double g, double b) {
    return level(a) << 24 | level(r) << 16 | level(g) << 8 | level(b);
  };
  if (kind == "checker") return (x + y) % 2 ? 0xFF202060u : 0xFFF0E0A0u;
  if (kind == "fade") return color(1, u, u, u);
  const double far = std::hypot(u - 0.5, v - 0.5);
  if (kind == "glow") return color(1 - 2 * far, 0.9, 0.3 + 0.5 * u, 0.1);
  if (kind == "bits") return far < 0.42 && (x / 2 + y / 2) % 3 ? 0xFFFFFFFFu : 0xFF000000u;
  return color(1, 0.5 + 0.5 * std::sin(9 * u + 4 * v), v, 0.5 + 0.5 * std::cos(14 * far));  // photo
}

// Draws the scene whose lines follow, up to the next "scene"; false if something was refused.
inline bool draw(const std::vector<std::string>& lines, Canvas& canvas) {
  bool isDone = true;
  for (const std::string& line : lines) {
    std::istringstream in(line);
    std::string name;
    std::string word;
    in >> name;
    Six six;
    int width = 0;
    int height = 0;
    const auto place = [&] { in >> six.a >> six.b >> six.c >> six.d >> six.e >> six.f; };
    const auto picture = [&] {
      in >> word >> width >> height;
      place();
    };
    if (name == "image") {
      picture();
      isDone = canvas.image(word, width, height, six) && isDone;
    } else if (name == "stencil") {
      picture();
      isDone = canvas.stencil(width, height, six) && isDone;
    } else if (name == "tile") {
      picture();
      isDone = canvas.tile(word, width, height, six) && isDone;
    } else if (name == "mask") {
      picture();
      isDone = canvas.mask(word, width, height, six) && isDone;
    } else if (name == "axial" || name == "axial-stroke" || name == "radial") {
      Numbers places(name == "radial" ? 6 : 4);
      for (double& number : places) in >> number;
      unsigned extend = 0;
      in >> extend;
      std::vector<Stop> stops;
      Stop stop{};
      while (in >> stop.offset >> std::hex >> stop.color >> std::dec) stops.push_back(stop);
      isDone = canvas.gradient(name == "axial-stroke", places, extend, stops) && isDone;
    } else if (name == "text" || name == "cliptext") {
      double size = 0;
      in >> word >> size;
      place();
      std::string text;
      std::getline(in >> std::ws, text);
      isDone = canvas.text(word, size, six, text, name == "cliptext") && isDone;
    } else {
      Numbers numbers;
      if (name == "fill" || name == "stroke") {
        std::uint32_t color = 0;
        in >> std::hex >> color;
        numbers.push_back(color);
      } else {
        double number = 0;
        while (in >> number) numbers.push_back(number);
      }
      isDone = canvas.apply(name, numbers) && isDone;
    }
  }
  return isDone;
}

struct Scene {
  std::string name;
  std::vector<std::string> lines;
};

inline std::vector<Scene> read(std::istream& in) {
  std::vector<Scene> scenes;
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("scene ", 0) == 0) {
      scenes.push_back({line.substr(6), {}});
    } else if (!line.empty() && !scenes.empty()) {
      scenes.back().lines.push_back(line);
    }
  }
  return scenes;
}

}  // namespace pictures
