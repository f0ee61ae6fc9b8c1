#include "bay_view.hpp"

#include <cmath>
#include <numbers>

namespace {

using std::numbers::pi;
using Context = Cairo::RefPtr<Cairo::Context>;

constexpr double coinFlight = 0.9;  // seconds
constexpr double frameInterval = 1.0 / 30;

void setColor(const Context& cairo, unsigned rgb, double alpha = 1) {
  cairo->set_source_rgba((rgb >> 16 & 255) / 255.0, (rgb >> 8 & 255) / 255.0, (rgb & 255) / 255.0, alpha);
}

void fillGradient(const Context& cairo, double top, double bottom, unsigned from, unsigned to) {
  const auto gradient = Cairo::LinearGradient::create(0, top, 0, bottom);
  gradient->add_color_stop_rgb(0, (from >> 16 & 255) / 255.0, (from >> 8 & 255) / 255.0,
                               (from & 255) / 255.0);
  gradient->add_color_stop_rgb(1, (to >> 16 & 255) / 255.0, (to >> 8 & 255) / 255.0, (to & 255) / 255.0);
  cairo->set_source(gradient);
  cairo->fill();
}

void disc(const Context& cairo, double x, double y, double radius) {
  cairo->begin_new_sub_path();
  cairo->arc(x, y, radius, 0, 2 * pi);
}

void polygon(const Context& cairo, std::initializer_list<std::pair<double, double>> points) {
  cairo->begin_new_path();
  for (const auto& [x, y] : points) cairo->line_to(x, y);
  cairo->close_path();
}

void drawCloud(const Context& cairo, double x, double y, double size) {
  setColor(cairo, 0xffffff, 0.85);
  disc(cairo, x, y, 0.5 * size);
  disc(cairo, x + 0.55 * size, y + 0.1 * size, 0.4 * size);
  disc(cairo, x - 0.6 * size, y + 0.15 * size, 0.35 * size);
  cairo->fill();
}

void drawSky(const Context& cairo, double width, double horizon, double now) {
  cairo->rectangle(0, 0, width, horizon + 20);
  fillGradient(cairo, 0, horizon, 0x4aa8e0, 0xfdebc8);
  for (const auto& [radius, alpha] : {std::pair{88.0, 0.25}, {62.0, 0.4}, {42.0, 1.0}}) {
    setColor(cairo, 0xffe08a, alpha);
    disc(cairo, 0.24 * width, 0.62 * horizon, radius);
    cairo->fill();
  }
  const double drift = std::fmod(6 * now, width + 200);
  drawCloud(cairo, std::fmod(drift + 250, width + 200) - 100, 0.36 * horizon, 46);
  drawCloud(cairo, std::fmod(drift + 510, width + 200) - 100, 0.52 * horizon, 34);
}

void drawHill(const Context& cairo, double x, double horizon, double radius, unsigned rgb) {
  cairo->save();
  cairo->translate(x, horizon + 12);
  cairo->scale(1, 0.55);
  disc(cairo, 0, 0, radius);
  cairo->restore();
  setColor(cairo, rgb);
  cairo->fill();
}

/// One band of water with a rippled upper edge, down to the bottom.
void drawWater(const Context& cairo, double width, double top, double bottom, double phase, unsigned rgb) {
  cairo->begin_new_path();
  cairo->move_to(0, bottom);
  for (int x = 0; x <= width + 8; x += 8) cairo->line_to(x, top + 5 * std::sin(x / 34.0 + phase));
  cairo->line_to(width, bottom);
  setColor(cairo, rgb);
  cairo->fill();
}

void drawLighthouse(const Context& cairo, double x, double y, double now) {
  const double sweep = 0.35 * std::sin(0.9 * now);
  const auto beam = Cairo::LinearGradient::create(x, 0, x - 260, 0);
  beam->add_color_stop_rgba(0, 1, 0.97, 0.8, 0.9);
  beam->add_color_stop_rgba(1, 1, 0.97, 0.8, 0);
  cairo->set_source(beam);
  polygon(cairo, {{x, y - 128}, {x - 260, y - 150 + 90 * sweep}, {x - 260, y - 70 + 90 * sweep}});
  cairo->fill();
  setColor(cairo, 0x6d5c53);
  polygon(cairo, {{x - 52, y + 16}, {x - 30, y - 16}, {x + 34, y - 20}, {x + 60, y + 16}});
  cairo->fill();
  setColor(cairo, 0xffffff);
  polygon(cairo, {{x - 20, y - 14}, {x - 13, y - 116}, {x + 13, y - 116}, {x + 20, y - 14}});
  cairo->fill();
  setColor(cairo, 0xe2574c);
  polygon(cairo, {{x - 18.2, y - 40}, {x - 16.4, y - 66}, {x + 16.4, y - 66}, {x + 18.2, y - 40}});
  cairo->fill();
  polygon(cairo, {{x - 14.8, y - 90}, {x - 13, y - 116}, {x + 13, y - 116}, {x + 14.8, y - 90}});
  cairo->fill();
  polygon(cairo, {{x - 17, y - 136}, {x, y - 154}, {x + 17, y - 136}});
  cairo->fill();
  setColor(cairo, 0xffd75e);
  cairo->rectangle(x - 10, y - 136, 20, 20);
  cairo->fill();
}

void drawWhale(const Context& cairo, double x, double y, double now) {
  cairo->save();
  cairo->translate(x, y + 3 * std::sin(1.3 * now));
  setColor(cairo, 0x35507a);
  cairo->move_to(-46, 16);
  cairo->curve_to(-46, -34, 24, -38, 44, 4);
  cairo->curve_to(52, 2, 56, -8, 54, -20);
  cairo->curve_to(60, -14, 66, -14, 74, -20);
  cairo->curve_to(74, 0, 62, 14, 44, 18);
  cairo->close_path();
  cairo->fill();
  setColor(cairo, 0xffffff);
  disc(cairo, -26, -4, 3);
  cairo->fill();
  cairo->set_line_width(3);
  cairo->set_line_cap(Cairo::Context::LineCap::ROUND);
  const double spout = 10 + 4 * std::sin(3 * now);
  for (const double side : {-1.0, 1.0}) {
    cairo->move_to(-8, -26);
    cairo->curve_to(-8, -34 - spout, -8 + 12 * side, -36 - spout, -8 + 16 * side, -28 - spout / 2);
  }
  cairo->stroke();
  cairo->restore();
}

void drawBoat(const Context& cairo, double x, double y, double now, bool hasStripes) {
  cairo->save();
  cairo->translate(x, y + 4 * std::sin(1.7 * now));
  cairo->rotate(0.035 * std::sin(1.1 * now));
  setColor(cairo, 0x6b3f2a);
  cairo->rectangle(-3, -136, 6, 132);
  cairo->fill();
  const auto mainSail = [&] { polygon(cairo, {{9, -132}, {78, -26}, {9, -20}}); };
  mainSail();
  setColor(cairo, 0xfffaf0);
  cairo->fill();
  if (hasStripes) {
    cairo->save();
    mainSail();
    cairo->clip();
    setColor(cairo, 0xf0604d);
    for (int top = -116; top < -20; top += 36) cairo->rectangle(0, top, 90, 18);
    cairo->fill();
    cairo->restore();
  }
  setColor(cairo, hasStripes ? 0xffc94d : 0xf1e6d2);
  polygon(cairo, {{-9, -118}, {-9, -22}, {-58, -28}});
  cairo->fill();
  setColor(cairo, 0xb5523b);
  cairo->move_to(-84, -8);
  cairo->line_to(92, -8);
  cairo->curve_to(80, 34, 60, 38, 0, 38);
  cairo->curve_to(-52, 38, -70, 28, -84, -8);
  cairo->fill();
  setColor(cairo, 0xfff1dc);
  cairo->rectangle(-79, 2, 167, 5);
  cairo->fill();
  cairo->restore();
}

void drawCoin(const Context& cairo, double x, double y, double age) {
  const double progress = age / coinFlight;
  cairo->save();
  cairo->translate(x + 70 * progress, y - 190 * progress + 110 * progress * progress);
  cairo->scale(std::max(0.15, std::abs(std::cos(2 * pi * progress))), 1);
  const double alpha = std::min(1.0, 3 * (1 - progress));
  setColor(cairo, 0xc98a12, alpha);
  disc(cairo, 0, 0, 15);
  cairo->fill();
  setColor(cairo, 0xffcf4d, alpha);
  disc(cairo, 0, 0, 12);
  cairo->fill();
  cairo->restore();
}

}  // namespace

BayView::BayView() {
  set_draw_func([this](const Context& cairo, int width, int height) { draw(cairo, width, height); });
  add_tick_callback([this](const Glib::RefPtr<Gdk::FrameClock>& clock) { return advance(clock); });
}

void BayView::setBuiltCount(int count) {
  built_ = count;
  queue_draw();
}

void BayView::tossCoin() { coinTosses_.push_back(now_); }

void BayView::setStill(bool still) { still_ = still; }

bool BayView::advance(const Glib::RefPtr<Gdk::FrameClock>& clock) {
  const double elapsed = static_cast<double>(clock->get_frame_time() - lastFrame_) / 1e6;
  if (still_ || elapsed < frameInterval) return true;
  lastFrame_ = clock->get_frame_time();
  now_ += std::min(elapsed, 0.1);
  std::erase_if(coinTosses_, [this](double toss) { return now_ - toss > coinFlight; });
  queue_draw();
  return true;
}

void BayView::draw(const Context& cairo, int width, int height) const {
  const double horizon = 0.38 * height;
  const double center = 0.5 * width;
  drawSky(cairo, width, horizon, now_);
  drawHill(cairo, 0.86 * width, horizon, 150, 0x7fb48c);
  drawHill(cairo, 0.52 * width, horizon, 96, 0x9cc79b);
  drawWater(cairo, width, horizon, height, 0.7 * now_, 0x49b3c4);
  if (built_ > lighthouse) drawLighthouse(cairo, 0.84 * width, horizon + 14, now_);
  drawWater(cairo, width, horizon + 34, height, 1 - 0.9 * now_, 0x35a0b8);
  if (built_ > whale) drawWhale(cairo, 0.19 * width, horizon + 68, now_);
  drawWater(cairo, width, horizon + 76, height, 1.1 * now_, 0x258aa8);
  drawBoat(cairo, center, horizon + 104, now_, built_ > sail);
  for (const double toss : coinTosses_) drawCoin(cairo, center + 70, horizon + 110, now_ - toss);
  drawWater(cairo, width, horizon + 126, height, 2 - 1.3 * now_, 0x1b7594);
}
