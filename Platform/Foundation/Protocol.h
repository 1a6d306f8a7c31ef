// Protocols: abstract classes that other classes adopt (derive from). An operation of a protocol is
// optional if the adopting class need not override it.
#pragma once

#include <bitset>
#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/NonCopyable.h"

namespace vel {

/// A reference that keeps its object alive. The reference may be null.
template <class T>
using Strong = std::shared_ptr<T>;

/// A reference that does not keep its object alive. Its `lock` returns null after the object is
/// destroyed.
template <class T>
using Weak = std::weak_ptr<T>;

/// The base class of NSObject and of all protocols.
class VEL_EXPORT NSObjectProtocol : public NonCopyable {
 public:
  virtual ~NSObjectProtocol() = default;

  /// The name of the object's class. The template `Class` in NSObject.h implements this operation.
  [[nodiscard]] virtual std::string_view className() const = 0;
  /// Returns true if `other` equals this object. Each class defines equality. Returns false for
  /// null.
  [[nodiscard]] virtual bool isEqual(const NSObjectProtocol* other) const = 0;
};

/// A set of optional operations of one protocol. Each bit stands for one operation, in the order of
/// the list `Optional` (see `Protocol` below).
using OperationSet = std::bitset<8>;

/// A list of operations, as member function pointers.
template <auto... Operation>
struct Operations {};

/// The base of a protocol with optional operations. The protocol gives each optional operation a
/// default body and defines the list `Optional`:
///
///     template <class Adopter>
///     using Optional = Operations<&Adopter::first, &Adopter::second>;
///
/// `Self` is the protocol. Each protocol therefore has a base class of its own, with its own
/// `respondingOperations`.
template <class Self>
class Protocol : public virtual NSObjectProtocol {
 public:
  /// The optional operations that the object implements (responds to). By default, these are the
  /// operations that the object's class overrides. A class may override this function and decide at
  /// run time.
  [[nodiscard]] virtual OperationSet respondingOperations() const = 0;
};

namespace detail {

// Turns an operation into a type. The functions below compare these types, because pointers to
// virtual member functions cannot be compared at compile time.
template <auto Operation>
struct Constant {};

template <auto Operation, auto... Listed>
consteval std::size_t indexOf(Operations<Listed...>) {
  std::size_t index = 0;
  const bool isFound =
      ((std::is_same_v<Constant<Operation>, Constant<Listed>> || (++index, false)) || ...);
  return isFound ? index : OperationSet().size();
}

// For each optional operation, `Declared` contains `&P::operation` and `Adopted` contains
// `&Adopter::operation`. The two pointers are the same if the adopter does not override the
// operation.
template <auto... Declared, auto... Adopted>
constexpr OperationSet overriddenOperations(Operations<Declared...>, Operations<Adopted...>) {
  unsigned long bits = 0;
  unsigned index = 0;
  ((bits |= (std::is_same_v<Constant<Declared>, Constant<Adopted>> ? 0UL : 1UL) << index++), ...);
  return {bits};
}

template <class P>
concept HasOptionalOperations = requires { typename P::template Optional<P>; };

// The protocol that declares an operation. T is the type of the pointer to the operation.
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

/// A base of each class `Adopter` that adopts the protocol P. The template `Class` in NSObject.h
/// adds this base. If P has optional operations, `Adopts` implements `respondingOperations`.
template <class Adopter, class P>
class Adopts : public P {};

template <class Adopter, detail::HasOptionalOperations P>
class Adopts<Adopter, P> : public P {
 public:
  [[nodiscard]] OperationSet respondingOperations() const override {
    static_assert(std::is_final_v<Adopter>,
                  "a class that adopts a protocol with optional operations must be final: the "
                  "overrides of a subclass would not be found");
    return detail::overriddenOperations(typename P::template Optional<P>(),
                                        typename P::template Optional<Adopter>());
  }
};

/// Returns true if the object responds to the optional operation. Returns false for null. Example:
/// `respondsTo<&P::operation>(delegate)`.
template <auto Operation, class P>
[[nodiscard]] bool respondsTo(const Strong<P>& object) {
  using DeclaringProtocol = typename detail::ProtocolOf<decltype(Operation)>::Type;
  constexpr auto index = detail::indexOf<Operation>(
      typename DeclaringProtocol::template Optional<DeclaringProtocol>());
  static_assert(index < OperationSet().size(),
                "the protocol does not list this operation as optional");
  return object != nullptr &&
         static_cast<const DeclaringProtocol&>(*object).respondingOperations().test(index);
}

/// Casts the object to the protocol or class P. Returns null if the object is null or its
/// class does not derive from P.
template <class P, class T>
[[nodiscard]] Strong<P> as(const Strong<T>& object) {
  return std::dynamic_pointer_cast<P>(object);
}

/// Returns true if the object's class adopts the protocol P. Returns false for null.
template <class P, class T>
[[nodiscard]] bool conformsTo(const Strong<T>& object) {
  return dynamic_cast<const P*>(object.get()) != nullptr;
}

}  // namespace vel
