// The root class of all objects, the template that gives a class its name, and `make`.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Protocol.h"

namespace vel {

/// The name of a class, as a template argument of `Class`.
template <std::size_t Size>
struct ClassName {
  // Implicit, so that the template argument can be a literal.
  consteval ClassName(const char (&text)[Size]) { std::copy_n(text, Size, characters); }
  [[nodiscard]] constexpr std::string_view view() const { return {characters, Size - 1}; }
  char characters[Size]{};
};

/// The root class. `make` makes every object and returns its first strong reference.
class VEL_EXPORT NSObject : public virtual NSObjectProtocol,
                            public std::enable_shared_from_this<NSObject> {
 public:
  /// Compares identity. A class that defines another equality overrides this operation.
  [[nodiscard]] bool isEqual(const NSObjectProtocol* other) const override {
    return other == static_cast<const NSObjectProtocol*>(this);
  }
};

/// The base of every class except NSObject. The template arguments are the class itself, its name,
/// its superclass and the protocols that it adopts.
///
///     class Player : public Class<Player, "Player", NSObject, ContentViewDelegate> { … };
///
/// `className` returns the name. Do not derive a class directly from its superclass, without
/// `Class`: `make` would not compile for it.
template <class Self, ClassName Name, class Superclass = NSObject, class... Protocols>
class Class : public Superclass, public Adopts<Self, Protocols>... {
 public:
  using Superclass::Superclass;
  /// Names the class itself. In a class that is derived without `Class`, names the superclass
  /// instead, so `make` refuses that class.
  using NamedClass = Self;

  /// The name of the class. Needs no object.
  static constexpr std::string_view staticClassName() { return Name.view(); }
  [[nodiscard]] std::string_view className() const override { return Name.view(); }

  /// A strong reference to this object. Null in its constructor and destructor.
  [[nodiscard]] Strong<Self> self() {
    return std::static_pointer_cast<Self>(this->weak_from_this().lock());
  }
};

/// Makes an object of class T. This is the only way to make an object.
template <class T, class... Arguments>
[[nodiscard]] Strong<T> make(Arguments&&... arguments) {
  static_assert(
      std::same_as<typename T::NamedClass, T>,
      "this class does not name itself: derive it from Class<Self, \"Name\", Superclass>");
  return std::make_shared<T>(std::forward<Arguments>(arguments)...);
}

}  // namespace vel
