#pragma once

#include <vector>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/NonCopyable.h"
#include "Platform/WindowSystem/Wayland/Spinner.h"
#include "Platform/WindowSystem/WindowSystem.h"

struct wl_message;
union wl_argument;

namespace vel::wayland {

/// Draws a scene on a surface of the back end. The surface itself shows the lowest item if this
/// item fills the window, and otherwise a background colour. Each other item is a desynchronised
/// subsurface. The owner of the surface owns the canvas.
class Canvas final : public NonCopyable {
 public:
  /// `background` is the colour of the surface if no item fills it.
  Canvas(Connection& connection, wl_surface* surface, CGColor background);
  ~Canvas();

  /// Shows the scene on the surface, which gets the size `size` in surface coordinates. Commits the
  /// surface.
  void show(const Scene& scene, CGSize size);
  /// Draws the picture of each animated spinner at the time `now`.
  void animate(Nanoseconds now);
  /// True if a spinner turns.
  [[nodiscard]] bool isAnimated() const;
  /// Returns true if this surface belongs to the canvas.
  [[nodiscard]] bool contains(const wl_surface* surface) const;
  /// Call this when the scale of an output has changed, or when an output has been removed.
  void updateScale();

 private:
  /// A surface that shows one colour or one spinner.
  struct Pane {
    SceneItem item;
    CGSize windowSize;  // the size of the canvas when the pane was opened
    Proxy<wl_surface> surface;
    Proxy<wl_subsurface> subsurface;
    Proxy<wp_viewport> viewport;
    std::vector<Proxy<wl_buffer>> buffers;  // one colour, or the pictures of the spinner
    std::size_t shownBuffer = 0;
  };

  static int dispatchEvent(const void* canvas, void* surface, std::uint32_t event,
                           const wl_message* message, wl_argument* arguments);
  void setFractionalScale(double scale);
  friend struct ScaleEvents;

  // Makes `buffer` fill a surface of this size.
  void attach(wl_surface* surface, wp_viewport* viewport, const Proxy<wl_buffer>& buffer,
              CGSize size, int bufferScale) const;
  // Makes a buffer for a surface of this size. `viewport` is the viewport of the surface, or null.
  [[nodiscard]] std::vector<Proxy<wl_buffer>> makeColorBuffers(CGColor color, CGSize size,
                                                               const wp_viewport* viewport) const;
  void showBackground(CGColor color, CGSize size);
  Pane openPane(const SceneItem& item, CGSize windowSize);
  void paint(Pane& pane);
  [[nodiscard]] double scale() const;

  Connection& connection_;
  wl_surface* surface_;
  CGColor background_;  // the colour if no item fills the surface
  Proxy<wp_viewport> viewport_;
  Proxy<wp_fractional_scale_v1> fractionalScaleObject_;
  std::vector<Proxy<wl_buffer>> backgroundBuffers_;
  CGColor shownColor_;  // the colour and the size of the buffer that the surface itself shows
  CGSize shownSize_;
  std::vector<Pane> panes_;
  std::vector<wl_output*> outputs_;  // the outputs that show the surface
  double fractionalScale_ = 0;       // 0 if the compositor has not sent a scale
  double paintedScale_ = 1;          // the scale of the painted spinners
};

}  // namespace vel::wayland
