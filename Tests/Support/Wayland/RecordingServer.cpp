#include "Tests/Support/Wayland/RecordingServer.h"

#include <fractional-scale-v1-server.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <viewporter-server.h>
#include <wayland-server.h>
#include <xdg-dialog-v1-server.h>
#include <xdg-shell-server.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Tests/Support/Wayland/RecordingCompositor.h"

namespace vel::test {

namespace {

constexpr std::uint32_t kMainButton = 0x110;  // BTN_LEFT of the Linux kernel

struct SupportedInterface {
  const wl_interface* interface;
  int version;
};
const std::array kSupportedInterfaces{
    SupportedInterface{&wl_compositor_interface, 4},
    SupportedInterface{&wl_subcompositor_interface, 1},
    SupportedInterface{&wl_shm_interface, 1},
    SupportedInterface{&wl_output_interface, 3},
    SupportedInterface{&wl_seat_interface, 5},
    SupportedInterface{&xdg_wm_base_interface, 1},
    SupportedInterface{&xdg_wm_dialog_v1_interface, 1},
    SupportedInterface{&wp_viewporter_interface, 1},
    SupportedInterface{&wp_fractional_scale_manager_v1_interface, 1},
};

/// A protocol object of the client.
struct Object {
  int global = 0;  // the number of the global object from which this object descends
  // The wl_surface to which the object belongs. A wl_surface belongs to itself.
  wl_resource* surface = nullptr;
  CGSize size{};  // of a wl_buffer
};

/// A wl_surface. A commit copies `pending` to `current`. Changes of the title and of the modal
/// state need no commit.
struct Surface {
  SurfaceRecord current;
  SurfaceRecord pending;
  bool isConfigured = false;  // the client has sent ack_configure
  int number = 0;             // 1 for the surface that was created first
};

class Server;

struct Global {
  Server* server;
  int number;
  int scale;  // of a wl_output
  const wl_interface* interface;
  wl_global* handle;
};

class Server : NonCopyable {
 public:
  Server(const std::filesystem::path& folder, int control) : control_(control) {
    // Discards the log of libwayland. A client that disconnects before it has read all events would
    // cause an error in the log.
    wl_log_set_handler_server([](const char* /*format*/, va_list /*arguments*/) {});
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    if (wl_display_add_socket(display_, "wayland-1") != 0) {
      throw std::runtime_error("no socket in " + folder.string());
    }
  }

  ~Server() {
    wl_display_destroy_clients(display_);
    wl_display_destroy(display_);
  }

  void run() {
    std::array<pollfd, 2> inputs{
        pollfd{.fd = wl_event_loop_get_fd(wl_display_get_event_loop(display_)),
               .events = POLLIN,
               .revents = 0},
        pollfd{.fd = control_, .events = POLLIN, .revents = 0}};
    while (poll(inputs.data(), inputs.size(), -1) > 0) {
      handleClients();
      if (inputs[1].revents == 0) {
        continue;
      }
      std::array<char, 256> buffer{};
      const ssize_t size = recv(control_, buffer.data(), buffer.size(), 0);
      if (size <= 0) {
        return;
      }
      std::istringstream command(std::string(buffer.data(), static_cast<std::size_t>(size)));
      const std::string reply = execute(command) + '\n';
      handleClients();
      send(control_, reply.data(), reply.size(), MSG_NOSIGNAL);
    }
  }

 private:
  // Handles the requests that have arrived, and sends the queued events.
  void handleClients() {
    wl_event_loop* const loop = wl_display_get_event_loop(display_);
    pollfd input{.fd = wl_event_loop_get_fd(loop), .events = POLLIN, .revents = 0};
    do {
      wl_event_loop_dispatch(loop, 0);
      wl_display_flush_clients(display_);
    } while (poll(&input, 1, 0) > 0);
  }

  // Objects

  wl_resource* create(wl_client* client, const wl_interface* interface, std::uint32_t version,
                      std::uint32_t id, Object object) {
    wl_resource* const resource =
        wl_resource_create(client, interface, static_cast<int>(version), id);
    if (interface == &wl_surface_interface) {
      object.surface = resource;
      Surface& surface = surfaces_[resource];
      surface.current.id = surface.pending.id = id;
      surface.number = ++lastSurfaceNumber_;
    }
    objects_[resource] = object;
    wl_resource_set_dispatcher(resource, &Server::dispatch, this, this, &Server::removeObject);
    return resource;
  }

  static void removeObject(wl_resource* resource) {
    Server& server = *static_cast<Server*>(wl_resource_get_user_data(resource));
    server.objects_.erase(resource);
    if (server.surfaces_.erase(resource) > 0) {
      for (auto& [other, object] : server.objects_) {
        if (object.surface == resource) {
          object.surface = nullptr;
        }
      }
    }
  }

  static void bind(wl_client* client, void* data, std::uint32_t version, std::uint32_t id) {
    const Global& global = *static_cast<Global*>(data);
    wl_resource* const resource = global.server->create(client, global.interface, version, id,
                                                        Object{.global = global.number});
    if (global.interface == &wl_shm_interface) {
      wl_shm_send_format(resource, WL_SHM_FORMAT_ARGB8888);
    } else if (global.interface == &wl_seat_interface) {
      wl_seat_send_capabilities(resource, WL_SEAT_CAPABILITY_KEYBOARD | WL_SEAT_CAPABILITY_POINTER);
    } else if (global.interface == &wl_output_interface) {
      wl_output_send_scale(resource, global.scale);
      wl_output_send_done(resource);
    }
  }

  std::vector<wl_resource*> find(std::string_view interface,
                                 const std::function<bool(const Object&)>& condition) const {
    std::vector<wl_resource*> found;
    for (const auto& [resource, object] : objects_) {
      if (wl_resource_get_class(resource) == interface && condition(object)) {
        found.push_back(resource);
      }
    }
    return found;
  }

  std::vector<wl_resource*> objectsOfSurface(wl_resource* surface,
                                             std::string_view interface) const {
    return find(interface, [surface](const Object& object) { return object.surface == surface; });
  }

  std::vector<wl_resource*> objectsOfGlobal(int global, std::string_view interface) const {
    return find(interface, [global](const Object& object) { return object.global == global; });
  }

  wl_resource* surfaceWithId(std::uint32_t id) const {
    const auto position = std::ranges::find_if(
        surfaces_, [id](const auto& entry) { return entry.second.current.id == id; });
    if (position == surfaces_.end()) {
      throw std::runtime_error("no surface " + std::to_string(id));
    }
    return position->first;
  }

  // Requests of the client

  static int dispatch(const void* server, void* target, std::uint32_t /*opcode*/,
                      const wl_message* message, wl_argument* arguments) {
    static_cast<Server*>(const_cast<void*>(server))
        ->handleRequest(static_cast<wl_resource*>(target), *message, arguments);
    return 0;
  }

  // A new object belongs to the surface of the first object among the arguments. Without an object
  // among the arguments, it belongs to the surface of `target`.
  void handleRequest(wl_resource* target, const wl_message& message, wl_argument* arguments) {
    const std::string request = std::string(wl_resource_get_class(target)) + '.' + message.name;
    requests_.push_back(request);
    const wl_resource* firstObject = nullptr;
    const wl_interface* newInterface = nullptr;
    std::uint32_t newId = 0;
    int index = 0;
    for (const char type : std::string_view(message.signature)) {
      if (type == '?' || std::isdigit(type) != 0) {
        continue;
      }
      if (type == 'h') {
        close(arguments[index].h);
      } else if (type == 'n') {
        newInterface = message.types[index];
        newId = arguments[index].n;
      } else if (type == 'o' && firstObject == nullptr) {
        firstObject = reinterpret_cast<wl_resource*>(arguments[index].o);
      }
      ++index;
    }
    const Object& object = objects_.at(target);
    wl_resource* created = nullptr;
    if (newInterface != nullptr) {
      wl_resource* const surface = firstObject == nullptr
                                       ? object.surface
                                       : objects_.at(const_cast<wl_resource*>(firstObject)).surface;
      created = create(wl_resource_get_client(target), newInterface,
                       static_cast<std::uint32_t>(wl_resource_get_version(target)), newId,
                       Object{.global = object.global, .surface = surface});
    }
    handleShmRequest(target, request, arguments, created);
    handleSurfaceRequest(created == nullptr ? target : created, request, arguments);
    if (request == "xdg_wm_base.destroy" &&
        !objectsOfGlobal(object.global, "xdg_surface").empty()) {
      wl_resource_post_error(target, XDG_WM_BASE_ERROR_DEFUNCT_SURFACES, "xdg_surface exists");
    } else if (request.ends_with(".destroy") || request.ends_with(".release")) {
      wl_resource_destroy(target);
    }
  }

  void handleShmRequest(wl_resource* target, std::string_view request, const wl_argument* arguments,
                        wl_resource* created) {
    if (request == "wl_shm.create_pool" && refusesPools_) {
      wl_resource_post_error(target, WL_SHM_ERROR_INVALID_FD, "refused");
    } else if (request == "wl_shm_pool.create_buffer") {
      objects_.at(created).size = {static_cast<double>(arguments[2].i),
                                   static_cast<double>(arguments[3].i)};
    }
  }

  // `resource` is the object that the request creates. If the request creates no object, `resource`
  // is the target of the request.
  void handleSurfaceRequest(wl_resource* resource, std::string_view request,
                            const wl_argument* arguments) {
    const auto position = surfaces_.find(objects_.at(resource).surface);
    if (position == surfaces_.end()) {
      return;
    }
    auto& [current, pending, isConfigured, number] = position->second;
    if (request == "wl_surface.attach") {
      auto* const buffer = reinterpret_cast<wl_resource*>(arguments[0].o);
      pending.bufferSize = buffer == nullptr ? CGSize() : objects_.at(buffer).size;
    } else if (request == "wl_surface.set_buffer_scale") {
      pending.bufferScale = arguments[0].i;
    } else if (request == "wp_viewport.set_destination") {
      pending.destination = {static_cast<double>(arguments[0].i),
                             static_cast<double>(arguments[1].i)};
    } else if (request == "wl_subcompositor.get_subsurface") {
      pending.parent = wl_resource_get_id(reinterpret_cast<wl_resource*>(arguments[2].o));
    } else if (request == "wl_subsurface.set_position") {
      pending.position = {static_cast<double>(arguments[0].i), static_cast<double>(arguments[1].i)};
    } else if (request == "xdg_surface.ack_configure") {
      isConfigured = true;
    } else if (request == "xdg_wm_dialog_v1.get_xdg_dialog" &&
               objectsOfSurface(position->first, "xdg_dialog_v1").size() > 1) {
      wl_resource_post_error(resource, XDG_WM_DIALOG_V1_ERROR_ALREADY_USED, "a second dialog");
    } else if (request.starts_with("xdg_dialog_v1.")) {
      current.isModal = pending.isModal = request == "xdg_dialog_v1.set_modal";
    } else if (request == "xdg_toplevel.set_title") {
      current.titleLength = pending.titleLength = static_cast<int>(std::strlen(arguments[0].s));
    } else if (request == "wl_surface.commit") {
      commit(resource);
    }
  }

  void commit(wl_resource* resource) {
    auto& [current, pending, isConfigured, number] = surfaces_.at(resource);
    ++pending.commitCount;
    current = pending;
    if (objectsOfSurface(resource, "xdg_toplevel").empty() || isConfigured) {
      return;
    }
    if (current.bufferSize != CGSize()) {
      wl_resource_post_error(resource, XDG_SURFACE_ERROR_UNCONFIGURED_BUFFER, "not configured");
    }
    sendConfigure(resource, 0, 0);
  }

  // Commands of the test

  std::string execute(std::istringstream& command) {
    std::string name;
    command >> name;
    if (name == "add") {
      std::string interface;
      int scale = 0;
      command >> interface >> scale;
      return std::to_string(addGlobal(interface, scale));
    }
    if (name == "surfaces") {
      return describeSurfaces();
    }
    if (name == "objects") {
      return describeObjects();
    }
    if (name == "requests") {
      std::string prefix;
      command >> prefix;
      return takeRequests(prefix);
    }
    // `first` is the number of a global object or the id of a surface.
    int first = 0;
    int second = 0;
    int third = 0;
    command >> first >> second >> third;
    if (name == "refuse-pools") {
      refusesPools_ = true;
    } else if (name == "remove") {
      wl_global_destroy(globals_.at(first)->handle);
      globals_.erase(first);
    } else if (name == "output-scale") {
      for (wl_resource* const output : objectsOfGlobal(first, "wl_output")) {
        wl_output_send_scale(output, second);
        wl_output_send_done(output);
      }
    } else if (name == "scale") {
      for (wl_resource* const object : objectsOfSurface(
               surfaceWithId(static_cast<std::uint32_t>(first)), "wp_fractional_scale_v1")) {
        wp_fractional_scale_v1_send_preferred_scale(object, static_cast<std::uint32_t>(second));
      }
    } else if (name == "configure") {
      sendConfigure(surfaceWithId(static_cast<std::uint32_t>(first)), second, third);
    } else if (name == "configure-maximised") {
      sendConfigure(surfaceWithId(static_cast<std::uint32_t>(first)), second, third,
                    {XDG_TOPLEVEL_STATE_MAXIMIZED});
    } else if (name == "configure-fullscreen") {
      sendConfigure(surfaceWithId(static_cast<std::uint32_t>(first)), second, third,
                    {XDG_TOPLEVEL_STATE_FULLSCREEN});
    } else if (name == "close") {
      for (wl_resource* const toplevel :
           objectsOfSurface(surfaceWithId(static_cast<std::uint32_t>(first)), "xdg_toplevel")) {
        xdg_toplevel_send_close(toplevel);
      }
    } else {
      // `second` is the id of a surface.
      sendEvent(name, first, surfaceWithId(static_cast<std::uint32_t>(second)));
    }
    return {};
  }

  int addGlobal(const std::string& interface, int scale) {
    const auto* const supported =
        std::ranges::find_if(kSupportedInterfaces, [&interface](const SupportedInterface& entry) {
          return entry.interface->name == interface;
        });
    if (supported == kSupportedInterfaces.end()) {
      throw std::runtime_error("unknown interface " + interface);
    }
    const int number = ++lastGlobalNumber_;
    auto global = std::make_unique<Global>(Global{.server = this,
                                                  .number = number,
                                                  .scale = scale,
                                                  .interface = supported->interface,
                                                  .handle = nullptr});
    global->handle = wl_global_create(display_, supported->interface, supported->version,
                                      global.get(), &Server::bind);
    globals_[number] = std::move(global);
    return number;
  }

  // Sends the event that `command` names. `global` is the number of a seat or an output.
  void sendEvent(const std::string& command, int global, wl_resource* surface) {
    const std::uint32_t serial = wl_display_next_serial(display_);
    wl_array keys;
    wl_array_init(&keys);
    for (wl_resource* const output : objectsOfGlobal(global, "wl_output")) {
      if (command == "enter-output") {
        wl_surface_send_enter(surface, output);
      } else if (command == "leave-output") {
        wl_surface_send_leave(surface, output);
      }
    }
    for (wl_resource* const keyboard : objectsOfGlobal(global, "wl_keyboard")) {
      if (command == "enter-keyboard") {
        wl_keyboard_send_enter(keyboard, serial, surface, &keys);
      } else if (command == "leave-keyboard") {
        wl_keyboard_send_leave(keyboard, serial, surface);
      }
    }
    for (wl_resource* const pointer : objectsOfGlobal(global, "wl_pointer")) {
      if (command == "press") {
        wl_pointer_send_enter(pointer, serial, surface, 0, 0);
        wl_pointer_send_button(pointer, serial, 0, kMainButton, WL_POINTER_BUTTON_STATE_PRESSED);
      }
    }
  }

  void sendConfigure(wl_resource* surface, int width, int height,
                     std::vector<xdg_toplevel_state> states = {}) {
    const std::size_t size = states.size() * sizeof(xdg_toplevel_state);
    wl_array stateArray{.size = size, .alloc = size, .data = states.data()};
    for (wl_resource* const toplevel : objectsOfSurface(surface, "xdg_toplevel")) {
      xdg_toplevel_send_configure(toplevel, width, height, &stateArray);
    }
    for (wl_resource* const xdgSurface : objectsOfSurface(surface, "xdg_surface")) {
      xdg_surface_send_configure(xdgSurface, wl_display_next_serial(display_));
    }
  }

  std::string describeSurfaces() const {
    std::map<int, SurfaceRecord> records;  // by the number of the surface
    for (const auto& [resource, surface] : surfaces_) {
      records[surface.number] = surface.current;
    }
    std::ostringstream text;
    for (const auto& [number, record] : records) {
      text << record.id << ' ' << record.parent << ' ' << record.position.x << ' '
           << record.position.y << ' ' << record.bufferSize.width << ' ' << record.bufferSize.height
           << ' ' << record.bufferScale << ' ' << record.destination.width << ' '
           << record.destination.height << ' ' << record.commitCount << ' ' << record.isModal << ' '
           << record.titleLength << '\n';
    }
    return text.str();
  }

  // Lists the interface of each protocol object. Does not use `objects_`, because `objects_` lacks
  // the objects that libwayland itself creates, such as wl_registry.
  std::string describeObjects() const {
    std::string text;
    wl_client* client = nullptr;
    wl_client_for_each(client, wl_display_get_client_list(display_)) {
      wl_client_for_each_resource(
          client,
          [](wl_resource* resource, void* data) {
            *static_cast<std::string*>(data) += std::string(wl_resource_get_class(resource)) + ' ';
            return WL_ITERATOR_CONTINUE;
          },
          &text);
    }
    return text;
  }

  std::string takeRequests(const std::string& prefix) {
    std::string text;
    for (const std::string& request : requests_) {
      if (request.starts_with(prefix)) {
        text += request + '\n';
      }
    }
    requests_.clear();
    return text;
  }

  int control_;  // the socket for the commands of the test
  wl_display* display_ = wl_display_create();
  std::map<int, std::unique_ptr<Global>> globals_;
  std::map<wl_resource*, Object> objects_;
  std::map<wl_resource*, Surface> surfaces_;
  std::vector<std::string> requests_;
  int lastGlobalNumber_ = 0;
  int lastSurfaceNumber_ = 0;
  bool refusesPools_ = false;
};

}  // namespace

void runRecordingServer(const std::filesystem::path& folder, int control) {
  Server(folder, control).run();
}

}  // namespace vel::test
