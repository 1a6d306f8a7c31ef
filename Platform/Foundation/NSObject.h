// The root of the object model: names, references and the class head.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Protocol.h"

namespace vel {

/// A text given as a template argument; what a class head names its class with.
template <std::size_t Size>
struct ClassName {
  // Implicit, so that a literal can stand in the class head.
  consteval ClassName(const char (&text)[Size]) { std::copy_n(text, Size, characters); }
  [[nodiscard]] constexpr std::string_view view() const { return {characters, Size - 1}; }
  char characters[Size]{};
};

/// The root class. Objects live in shared references, made by `make`; they are neither copied nor
/// moved.
class VEL_EXPORT NSObject : public virtual NSObjectProtocol,
                            public std::enable_shared_from_this<NSObject> {
 public:
  using AdoptedProtocols = ProtocolList<>;

  NSObject() = default;
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;
  NSObject(NSObject&&) = delete;
  NSObject& operator=(NSObject&&) = delete;
  ~NSObject() override = default;

  /// Identity, unless a class defines an equality of its own.
  [[nodiscard]] bool isEqual(const NSObjectProtocol* other) const override {
    return other == static_cast<const NSObjectProtocol*>(this);
  }

  /// The optional operations of an adopted protocol that the object's class overrides.
  [[nodiscard]] virtual OperationSet operationsOf(const std::type_info& /*protocol*/) const {
    return {};
  }
};

/// The head of a class: its own type, its name, its superclass and the protocols it adopts.
///
///     class Player : public Class<Player, "Player", NSObject, ContentViewDelegate> { … };
///
/// The name is what `className` answers and what class tests compare, exactly. A class that derives
/// from another without a head of its own cannot be made.
template <class Self, ClassName Name, class Superclass = NSObject, class... Protocols>
class Class : public Superclass, public Adopts<Self, Protocols>... {
 public:
  using Superclass::Superclass;
  using NamedClass = Self;
  using AdoptedProtocols = decltype(detail::joined(typename Superclass::AdoptedProtocols(),
                                                   ProtocolList<Protocols...>()));

  /// The name of the class itself, where there is no object to ask.
  static constexpr std::string_view staticClassName() { return Name.view(); }
  [[nodiscard]] std::string_view className() const override { return Name.view(); }
  [[nodiscard]] OperationSet operationsOf(const std::type_info& protocol) const override {
    return detail::operationsOf<Self>(protocol, AdoptedProtocols());
  }

  /// A strong reference to this object; none while it is being made or destroyed.
  [[nodiscard]] Strong<Self> self() {
    return std::static_pointer_cast<Self>(this->weak_from_this().lock());
  }
};

/// Makes an object of class T. Every object is made here.
template <class T, class... Arguments>
[[nodiscard]] Strong<T> make(Arguments&&... arguments) {
  static_assert(
      std::same_as<typename T::NamedClass, T>,
      "this class does not name itself: derive it from Class<Self, \"Name\", Superclass>");
  return std::make_shared<T>(std::forward<Arguments>(arguments)...);
}

}  // namespace vel
