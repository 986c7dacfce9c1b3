#pragma once

#include <cstddef>
#include <tuple>

/// Everything a signature can tell, read off &Class::Member or &Function. An object of it is an empty value that names
/// the callable: overloads are chosen by it.
///
/// With PARAMETERS below, it lets a table row that holds only names become a function:
///
///     int CBinding::ForceIFrame(PARAMETERS(&CClientProtocolBase::ForceIFrame, hLogin, dwStream))
///     int CBinding::ForceIFrame(void* hLogin, unsigned long dwStream)    // the same
template <auto Callable>
struct tagCall;

template <class R, class C, class... A, R (C::*Callable)(A...)>
struct tagCall<Callable>
{
    using Function = R(A...);       ///< as a plain function: a plug-in's entry point
    using Named = R(tagCall, A...); ///< with its name in front: an irregular version of it
    template <std::size_t N>
    using Arg = std::tuple_element_t<N, std::tuple<A...>>;
};

template <class R, class... A, R (*Callable)(A...)>
struct tagCall<Callable>
{
    template <std::size_t N>
    using Arg = std::tuple_element_t<N, std::tuple<A...>>;
};

// clang-format off
#define PARAMETERS(call, ...) \
    PARAMETERS_PICK(__VA_ARGS__ __VA_OPT__(,) P8, P7, P6, P5, P4, P3, P2, P1, P0)(call __VA_OPT__(,) __VA_ARGS__)
#define PARAMETERS_PICK(a, b, c, d, e, f, g, h, chosen, ...) chosen
#define PARAMETER(call, n, name) tagCall<call>::Arg<n> name
#define P0(call)
#define P1(call, a)                      PARAMETER(call, 0, a)
#define P2(call, a, b)                   P1(call, a), PARAMETER(call, 1, b)
#define P3(call, a, b, c)                P2(call, a, b), PARAMETER(call, 2, c)
#define P4(call, a, b, c, d)             P3(call, a, b, c), PARAMETER(call, 3, d)
#define P5(call, a, b, c, d, e)          P4(call, a, b, c, d), PARAMETER(call, 4, e)
#define P6(call, a, b, c, d, e, f)       P5(call, a, b, c, d, e), PARAMETER(call, 5, f)
#define P7(call, a, b, c, d, e, f, g)    P6(call, a, b, c, d, e, f), PARAMETER(call, 6, g)
#define P8(call, a, b, c, d, e, f, g, h) P7(call, a, b, c, d, e, f, g), PARAMETER(call, 7, h)
// clang-format on
