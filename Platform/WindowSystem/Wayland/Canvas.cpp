#include "Platform/WindowSystem/Wayland/Canvas.h"

#include <fractional-scale-v1.h>
#include <viewporter.h>
#include <wayland-client.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include "Platform/Foundation/NSLog.h"
#include "Platform/WindowSystem/Wayland/SharedMemory.h"

namespace vel::wayland {

namespace {

// The side of the buffer that viewporter scales to fill a surface with one colour. If the side is
// one pixel, some renderers leave the edges of the surface uncovered.
constexpr int kColorSide = 16;

// The scale of the spinners on a shared connection, which has no outputs. The compositor reduces
// the spinners on an output with a lower scale.
constexpr double kSharedScale = 2;

// The number that wp_fractional_scale_v1 sends for a scale of 1.
constexpr double kFractionalScaleUnit = 120;

std::uint32_t premultiplied(double component, double alpha) {
  return static_cast<std::uint32_t>(std::lround(component * alpha * 255));
}

// A buffer has an alpha channel even if the colour is opaque. A compositor may stop the frame
// callbacks of a surface that an opaque surface hides, and many hosts block until they get one.
std::uint32_t pixelOf(CGColor color) {
  return premultiplied(1, color.alpha) << 24U | premultiplied(color.red, color.alpha) << 16U |
         premultiplied(color.green, color.alpha) << 8U | premultiplied(color.blue, color.alpha);
}

int roundedUp(double length) { return std::max(1, static_cast<int>(std::ceil(length))); }

bool fills(CGRect frame, CGSize size) {
  return frame.origin.x <= 0 && frame.origin.y <= 0 &&
         frame.origin.x + frame.size.width >= size.width &&
         frame.origin.y + frame.size.height >= size.height;
}

// The part of the window that an item occupies. A spinner is a centred square.
CGRect visibleFrame(const SceneItem& item) {
  if (item.kind == SceneItem::Kind::Fill) {
    return item.frame;
  }
  const double side = std::min(item.frame.size.width, item.frame.size.height);
  return CGRectMake(item.frame.origin.x + (item.frame.size.width - side) / 2,
                    item.frame.origin.y + (item.frame.size.height - side) / 2, side, side);
}

std::size_t pictureAt(Nanoseconds now) {
  return static_cast<std::size_t>(now / kFrameInterval % kSpokes);
}

}  // namespace

/// The functions that libwayland calls with the events of wp_fractional_scale_v1.
struct ScaleEvents {
  static void preferredScale(void* data, wp_fractional_scale_v1* /*object*/, std::uint32_t scale) {
    static_cast<Canvas*>(data)->setFractionalScale(scale / kFractionalScaleUnit);
  }
  static constexpr wp_fractional_scale_v1_listener kListener{.preferred_scale = preferredScale};
};

// The user data of the surface stays null, because a toolkit reads the user data of each surface
// that the pointer or the keyboard enters. So the constructor adds a dispatcher, which gets the
// canvas in another argument.
Canvas::Canvas(Connection& connection, wl_surface* surface, CGColor background)
    : connection_(connection), surface_(surface), background_(background) {
  paintedScale_ = scale();
  wl_proxy_add_dispatcher(reinterpret_cast<wl_proxy*>(surface), &Canvas::dispatchEvent, this,
                          nullptr);
  if (connection.viewporter() != nullptr) {
    viewport_.reset(wp_viewporter_get_viewport(connection.viewporter(), surface));
    if (connection.fractionalScale() != nullptr) {
      fractionalScaleObject_.reset(wp_fractional_scale_manager_v1_get_fractional_scale(
          connection.fractionalScale(), surface));
      wp_fractional_scale_v1_add_listener(fractionalScaleObject_.get(), &ScaleEvents::kListener,
                                          this);
    }
  }
}

Canvas::~Canvas() = default;

int Canvas::dispatchEvent(const void* canvas, void* /*surface*/, std::uint32_t event,
                          const wl_message* /*message*/, wl_argument* arguments) {
  constexpr std::uint32_t kEnter = 0;
  auto& self = *static_cast<Canvas*>(const_cast<void*>(canvas));
  auto* const output = reinterpret_cast<wl_output*>(arguments->o);
  std::erase(self.outputs_, output);
  if (event == kEnter) {
    self.outputs_.push_back(output);
  }
  self.updateScale();
  return 0;
}

void Canvas::setFractionalScale(double scale) {
  fractionalScale_ = scale;
  updateScale();
}

double Canvas::scale() const {
  if (fractionalScale_ > 0) {
    return fractionalScale_;
  }
  if (connection_.isShared()) {
    return kSharedScale;
  }
  int scale = 1;
  for (const auto& output : connection_.outputs()) {
    if (std::ranges::find(outputs_, output->proxy.get()) != outputs_.end()) {
      scale = std::max(scale, output->scale);
    }
  }
  return scale;
}

void Canvas::updateScale() {
  // A new output may get the address of an output that has been removed.
  std::erase_if(outputs_, [this](const wl_output* output) {
    return std::ranges::none_of(connection_.outputs(), [output](const auto& entry) {
      return entry->proxy.get() == output;
    });
  });
  if (scale() == paintedScale_) {
    return;
  }
  paintedScale_ = scale();
  for (Pane& pane : panes_) {
    if (pane.item.kind == SceneItem::Kind::Spinner) {
      paint(pane);
    }
  }
}

bool Canvas::contains(const wl_surface* surface) const {
  return surface == surface_ || std::ranges::any_of(panes_, [surface](const Pane& pane) {
           return pane.surface.get() == surface;
         });
}

void Canvas::show(const Scene& scene, CGSize size) {
  const bool isFilled = !scene.empty() && scene.front().kind == SceneItem::Kind::Fill &&
                        fills(scene.front().frame, size);
  const std::span<const SceneItem> items = std::span(scene).subspan(isFilled ? 1 : 0);
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i == panes_.size()) {
      panes_.push_back(openPane(items[i], size));
    } else if (panes_[i].item != items[i] || panes_[i].windowSize != size ||
               panes_[i].buffers.empty()) {
      panes_.erase(panes_.begin() + static_cast<std::ptrdiff_t>(i), panes_.end());
      panes_.push_back(openPane(items[i], size));
    }
  }
  panes_.erase(panes_.begin() + static_cast<std::ptrdiff_t>(items.size()), panes_.end());
  showBackground(isFilled ? scene.front().color : background_, size);
}

void Canvas::showBackground(CGColor color, CGSize size) {
  if (backgroundBuffers_.empty() || color != shownColor_ || size != shownSize_) {
    std::vector<Proxy<wl_buffer>> buffers = makeColorBuffers(color, size, viewport_.get());
    if (!buffers.empty()) {
      shownColor_ = color;
      shownSize_ = size;
      attach(surface_, viewport_.get(), buffers.front(), size, 1);
      backgroundBuffers_.swap(buffers);
    }
    wl_surface_commit(surface_);  // before the previous buffer is destroyed
    return;
  }
  wl_surface_commit(surface_);
}

void Canvas::attach(wl_surface* surface, wp_viewport* viewport, const Proxy<wl_buffer>& buffer,
                    CGSize size, int bufferScale) const {
  wl_surface_attach(surface, buffer.get(), 0, 0);
  if (viewport != nullptr) {
    wp_viewport_set_destination(viewport, roundedUp(size.width), roundedUp(size.height));
  } else {
    wl_surface_set_buffer_scale(surface, bufferScale);
  }
  wl_surface_damage(surface, 0, 0, roundedUp(size.width), roundedUp(size.height));
}

std::vector<Proxy<wl_buffer>> Canvas::makeColorBuffers(CGColor color, CGSize size,
                                                       const wp_viewport* viewport) const {
  const bool isScaled = viewport != nullptr;
  const int width = isScaled ? kColorSide : roundedUp(size.width);
  const int height = isScaled ? kColorSide : roundedUp(size.height);
  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  if (count > kMaxPixelCount) {
    NSLog("Wayland: a buffer of %u by %u pixels does not fit into wl_shm",
          static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    return {};
  }
  return makeBuffers(connection_, {{.width = width,
                                    .height = height,
                                    .values = std::vector<std::uint32_t>(count, pixelOf(color))}});
}

Canvas::Pane Canvas::openPane(const SceneItem& item, CGSize windowSize) {
  Pane pane;
  pane.item = item;
  pane.windowSize = windowSize;
  pane.surface.reset(wl_compositor_create_surface(connection_.compositor()));
  pane.subsurface.reset(
      wl_subcompositor_get_subsurface(connection_.subcompositor(), pane.surface.get(), surface_));
  const CGRect frame = visibleFrame(item);
  const double top = windowSize.height - frame.origin.y - frame.size.height;
  wl_subsurface_set_position(pane.subsurface.get(),
                             static_cast<std::int32_t>(std::lround(frame.origin.x)),
                             static_cast<std::int32_t>(std::lround(top)));
  wl_subsurface_set_desync(pane.subsurface.get());
  if (connection_.viewporter() != nullptr) {
    pane.viewport.reset(wp_viewporter_get_viewport(connection_.viewporter(), pane.surface.get()));
  }
  paint(pane);
  return pane;
}

void Canvas::paint(Pane& pane) {
  const CGSize size = visibleFrame(pane.item).size;
  std::vector<Proxy<wl_buffer>> buffers;
  int bufferScale = 1;
  if (pane.item.kind == SceneItem::Kind::Fill) {
    buffers = makeColorBuffers(pane.item.color, size, pane.viewport.get());
  } else {
    const double scale = pane.viewport != nullptr ? paintedScale_ : std::ceil(paintedScale_);
    bufferScale = static_cast<int>(std::ceil(scale));
    const double side = pane.viewport != nullptr ? size.width : std::ceil(size.width);
    buffers = makeBuffers(connection_,
                          drawSpinner(std::max(1, static_cast<int>(std::lround(side * scale)))));
  }
  if (buffers.empty()) {
    return;
  }
  attach(pane.surface.get(), pane.viewport.get(), buffers.at(pane.shownBuffer), size, bufferScale);
  pane.buffers.swap(buffers);
  wl_surface_commit(pane.surface.get());  // before the previous buffers are destroyed
}

void Canvas::animate(Nanoseconds now) {
  for (Pane& pane : panes_) {
    const std::size_t picture = pictureAt(now);
    if (pane.item.isAnimated && pane.shownBuffer != picture && picture < pane.buffers.size()) {
      pane.shownBuffer = picture;
      const CGSize size = visibleFrame(pane.item).size;
      wl_surface_attach(pane.surface.get(), pane.buffers[picture].get(), 0, 0);
      wl_surface_damage(pane.surface.get(), 0, 0, roundedUp(size.width), roundedUp(size.height));
      wl_surface_commit(pane.surface.get());
    }
  }
}

bool Canvas::isAnimated() const {
  return std::ranges::any_of(panes_, [](const Pane& pane) { return pane.item.isAnimated; });
}

}  // namespace vel::wayland
