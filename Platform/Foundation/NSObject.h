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
  // Not explicit, so that the template argument can be a string literal.
  consteval ClassName(const char (&text)[Size]) { std::copy_n(text, Size, characters); }
  [[nodiscard]] constexpr std::string_view view() const { return {characters, Size - 1}; }
  char characters[Size]{};
};

/// The root class.
class VEL_EXPORT NSObject : public virtual NSObjectProtocol,
                            public std::enable_shared_from_this<NSObject> {
 public:
  /// Returns true if `other` is this object. A subclass may compare values instead.
  [[nodiscard]] bool isEqual(const NSObjectProtocol* other) const override {
    return other == static_cast<const NSObjectProtocol*>(this);
  }
};

/// The base of every class except NSObject. The template arguments are the class itself, its name,
/// its superclass and the protocols that it adopts.
///
///     class Player : public Class<Player, "Player", NSObject, ContentViewDelegate> { … };
template <class Self, ClassName Name, class Superclass = NSObject, class... Protocols>
class Class : public Superclass, public Adopts<Self, Protocols>... {
 public:
  using Superclass::Superclass;
  /// `make<T>` compiles only if `T::NamedClass` is `T`. A class that is derived without `Class`
  /// inherits the `NamedClass` of its superclass.
  using NamedClass = Self;

  /// The name of the class.
  static constexpr std::string_view staticClassName() { return Name.view(); }
  [[nodiscard]] std::string_view className() const override { return Name.view(); }

  /// A strong reference to this object. Null in the object's constructor and destructor.
  [[nodiscard]] Strong<Self> self() {
    return std::static_pointer_cast<Self>(this->weak_from_this().lock());
  }
};

/// Makes an object of class T. Make every object with this function.
template <class T, class... Arguments>
[[nodiscard]] Strong<T> make(Arguments&&... arguments) {
  static_assert(
      std::same_as<typename T::NamedClass, T>,
      "this class does not name itself: derive it from Class<Self, \"Name\", Superclass>");
  return std::make_shared<T>(std::forward<Arguments>(arguments)...);
}

}  // namespace vel
