// Protocols: abstract classes whose operations may be optional.
#pragma once

#include <bitset>
#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "Platform/Foundation/Export.h"

namespace vel {

/// A reference that keeps its object alive; may hold none.
template <class T>
using Strong = std::shared_ptr<T>;

/// A reference that does not keep its object alive, and answers none once it is gone.
template <class T>
using Weak = std::weak_ptr<T>;

/// What every object answers, whatever its class; the root of all protocols.
class VEL_EXPORT NSObjectProtocol {
 public:
  NSObjectProtocol() = default;
  NSObjectProtocol(const NSObjectProtocol&) = delete;
  NSObjectProtocol& operator=(const NSObjectProtocol&) = delete;
  NSObjectProtocol(NSObjectProtocol&&) = delete;
  NSObjectProtocol& operator=(NSObjectProtocol&&) = delete;
  virtual ~NSObjectProtocol() = default;

  /// The name of the object's class, as its class head gives it.
  [[nodiscard]] virtual std::string_view className() const = 0;
  /// Equality as the object defines it. None equals nothing.
  [[nodiscard]] virtual bool isEqual(const NSObjectProtocol* other) const = 0;
};

/// Which of a protocol's optional operations an object has, one bit each in the protocol's order.
using OperationSet = std::bitset<8>;

/// A list of operations, as member function pointers.
template <auto... Operation>
struct Operations {};

/// The base of a protocol with optional operations. The protocol gives each of them a default body
/// and lists them once:
///
///     template <class Adopter>
///     using Optional = Operations<&Adopter::first, &Adopter::second>;
template <class Self>
class Protocol : public virtual NSObjectProtocol {
 public:
  /// Filled in by `Adopts` from what the adopting class overrides. An object that decides at run
  /// time what it responds to overrides it once more.
  [[nodiscard]] virtual OperationSet respondingOperations() const = 0;
};

namespace detail {

template <auto Operation>
struct Constant {};

template <auto Wanted, auto... Listed>
consteval std::size_t indexOf(Operations<Listed...>) {
  std::size_t index = 0;
  const bool found =
      ((std::is_same_v<Constant<Wanted>, Constant<Listed>> || (++index, false)) || ...);
  return found ? index : OperationSet().size();
}

// An operation that the adopter did not override is still the protocol's own member.
template <auto... Declared, auto... Adopted>
constexpr OperationSet overridden(Operations<Declared...>, Operations<Adopted...>) {
  unsigned long bits = 0;
  unsigned index = 0;
  ((bits |= (std::is_same_v<Constant<Declared>, Constant<Adopted>> ? 0UL : 1UL) << index++), ...);
  return {bits};
}

template <class P>
concept HasOptionalOperations = requires { typename P::template Optional<P>; };

template <class T>
struct ProtocolOf;
template <class R, class P, class... A>
struct ProtocolOf<R (P::*)(A...)> {
  using Type = P;
};
template <class R, class P, class... A>
struct ProtocolOf<R (P::*)(A...) const> {
  using Type = P;
};

}  // namespace detail

/// The protocols that a class adopts, those of its superclasses included.
template <class... P>
struct ProtocolList {};

namespace detail {

template <class Class, class P>
OperationSet operationsOf() {
  if constexpr (HasOptionalOperations<P>) {
    return overridden(typename P::template Optional<P>(), typename P::template Optional<Class>());
  } else {
    return {};
  }
}

// Which of the protocol's operations the class has, be they its own or inherited.
template <class Class, class... P>
OperationSet operationsOf([[maybe_unused]] const std::type_info& protocol,
                          ProtocolList<P...> /*adopted*/) {
  OperationSet operations;
  ((protocol == typeid(P) ? void(operations = operationsOf<Class, P>()) : void()), ...);
  return operations;
}

template <class... Inherited, class... P>
auto joined(ProtocolList<Inherited...>, ProtocolList<P...>) -> ProtocolList<Inherited..., P...>;

}  // namespace detail

/// Adopts protocol P for class Self; part of the class head.
template <class Self, class P>
class Adopts : public P {};

template <class Self, detail::HasOptionalOperations P>
class Adopts<Self, P> : public P {
 public:
  // The object is asked, since a subclass of Self may have more.
  [[nodiscard]] OperationSet respondingOperations() const override {
    return static_cast<const Self&>(*this).operationsOf(typeid(P));
  }
};

/// Whether the object has the optional operation: `respondsTo<&P::operation>(delegate)`. None
/// responds to nothing.
template <auto Operation, class P>
[[nodiscard]] bool respondsTo(const Strong<P>& object) {
  using Declaring = typename detail::ProtocolOf<decltype(Operation)>::Type;
  constexpr auto index =
      detail::indexOf<Operation>(typename Declaring::template Optional<Declaring>());
  static_assert(index < OperationSet().size(), "this operation is not an optional one");
  return object != nullptr &&
         static_cast<const Declaring&>(*object).respondingOperations().test(index);
}

/// The object as an adopter of P (or as one of class P), or none if it does not declare itself one.
template <class P, class T>
[[nodiscard]] Strong<P> as(const Strong<T>& object) {
  return std::dynamic_pointer_cast<P>(object);
}

/// Whether the object declares that it adopts P. Having P's operations is not enough.
template <class P, class T>
[[nodiscard]] bool conformsTo(const Strong<T>& object) {
  return dynamic_cast<const P*>(object.get()) != nullptr;
}

}  // namespace vel
