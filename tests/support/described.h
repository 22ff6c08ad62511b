// What the tests and fuzzers know of the exported functions: each is described once, in tests/<family>/described/, and the
// description drives its recorded calls, its checks of arguments, its comparison of levels and its fuzzer. CONTRIBUTING.md
// has an example.
#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/api.h"

namespace vsp::test {

// The integer arguments of a call by their place in the argument list, zeros in the place of the others.
using Values = std::vector<Vsp64s>;

struct Limits {
    Vsp64s low = std::numeric_limits<Vsp32s>::min(), high = std::numeric_limits<Vsp32s>::max();
};

// A number of elements: fixed, times an argument plus a constant, or any function of the arguments.
class Count {
  public:
    Count(int number) : addend_(number) {}  // NOLINT(google-explicit-constructor)
    template <class F>
    requires std::is_invocable_r_v<Vsp64s, F, const Values&> Count(F function)
        : function_(function) {}  // NOLINT(google-explicit-constructor)
    Count(int factor, int position, int addend) : factor_(factor), position_(position), addend_(addend) {}

    Vsp64s operator()(const Values& values) const {
        if (function_) return function_(values);
        return addend_ + (factor_ == 0 ? 0 : factor_ * values.at(std::size_t(position_)));
    }
    Count operator+(int more) const { return Count(factor_, position_, addend_ + more); }
    friend Count operator*(int factor, const Count& n) {
        return Count(factor * n.factor_, n.position_, factor * n.addend_);
    }

    static constexpr int kFirstLength = -1;
    void setFirstLength(int position) {
        if (position_ == kFirstLength) position_ = position;
    }

  private:
    int factor_ = 0, position_ = 0, addend_ = 0;
    std::function<Vsp64s(const Values&)> function_;
};

inline Count argument(int position) { return Count(1, position, 0); }
inline const Count len(1, Count::kFirstLength, 0);  // the first length of the argument list

// Makes a new state. start is the number that a recorded stream begins with, 1 elsewhere.
using Initialiser = std::function<void(const Api&, int start, void* state)>;

// One argument of a function.
struct Argument {
    enum class Kind { value, in, out, io, state } kind;
    Count elements = 0;  // that a call may touch, without the history
    Count history = 0;   // elements before the pointer
    Count rows = 1;      // arrays that a pointer to pointers has

    // The integers that the argument or its elements may be; others give the error. With vspStsNoErr tests give a value no
    // others, and an array seldom.
    std::function<Limits(const Values&, int element)> limits = {};
    std::vector<Vsp64s> choices = {};  // in place of limits
    bool dependent = false;            // the limits depend on other arguments
    bool known = false;                // even if these are bad
    bool late = false;                 // checked after all others
    bool perhaps = false;              // the state decides whether it is checked
    VspStatus error = vspStsNoErr;
    VspStatus errorAbove = vspStsNoErr;  // of a value above its limits, where it is another one
    int step = 1;                        // of a length
    Vsp64s most = 0x7FFFFFFF;            // tests have no larger values, though these are legal

    std::function<bool(const Values&)> used =
        {};                         // of a pointer that is not always used: checked after all other arguments
    std::vector<int> sources = {};  // arguments whose memory this may be
    bool onlyInitialised = false, hasAddresses = false;
    std::size_t line = 16;  // bytes; the layout of a state may depend on its address modulo these
    Initialiser initialise = {};
    Vsp64s always = -1;  // the only content that the function writes
    int onWarning = -1;  // elements that count with a positive status
    bool keptOnWarning = false;
    std::pair<int, Vsp64s> onlyWith{-1, 0};  // the array is written where the first element of another one becomes this

    // The pointer points behind so many elements of the array.
    Argument after(Count elementsBefore) const {
        return with([&](Argument& a) { a.history = std::move(elementsBefore); });
    }
    // The pointer may be the same as one of these arguments.
    Argument mayBe(std::vector<int> positions) const {
        return with([&](Argument& a) { a.sources = std::move(positions); });
    }
    Argument mayBe(int position) const { return mayBe(std::vector<int>{position}); }
    // The array is only used in some calls, by the other arguments: values[place in the argument list].
    Argument when(std::function<bool(const Values&)> condition) const {
        return with([&](Argument& a) { a.used = std::move(condition); });
    }
    Argument when(int position, std::vector<Vsp64s> values) const {
        return when(
            [position, all = std::move(values)](const Values& v) { return contains(all, v.at(std::size_t(position))); });
    }
    Argument unless(int position, std::vector<Vsp64s> values) const {
        return when(
            [position, all = std::move(values)](const Values& v) { return !contains(all, v.at(std::size_t(position))); });
    }

    // What the elements must be: all the same, one after the other, or by the other arguments and the number of the
    // element.
    Argument holding(VspStatus errorElsewhere, Vsp64s low, Vsp64s high) const {
        return holding(errorElsewhere, std::vector<Limits>{{low, high}}, true);
    }
    Argument holding(VspStatus errorElsewhere, std::vector<Limits> each, bool repeated = false) const {
        return with([&](Argument& a) {
            a.error = errorElsewhere;
            a.limits = [=](const Values&, int i) {
                return repeated ? each[0] : std::size_t(i) < each.size() ? each[std::size_t(i)] : Limits{};
            };
        });
    }
    Argument holding(VspStatus errorElsewhere, std::function<Limits(const Values&, int element)> by) const {
        return with([&](Argument& a) { a.error = errorElsewhere, a.limits = std::move(by), a.dependent = true; });
    }
    Argument holdingOneOf(VspStatus errorElsewhere, std::vector<Vsp64s> all) const {
        return with([&](Argument& a) { a.error = errorElsewhere, a.choices = std::move(all); });
    }

    // A value above the limits, or a positive one that is not among the choices, gives another error.
    Argument above(VspStatus otherError) const {
        return with([&](Argument& a) { a.errorAbove = otherError; });
    }
    // The checks come after those of all other arguments.
    Argument checkedLast() const {
        return with([&](Argument& a) { a.late = true; });
    }
    // Limits by other arguments hold even if these are bad; a pointer with `when` is checked with all others.
    Argument anyway() const {
        return with([&](Argument& a) { a.known = true; });
    }
    // What the state decides is read or not, and so refused or not.
    Argument perhapsRead() const {
        return with([&](Argument& a) { a.perhaps = true; });
    }
    // A length that must be a multiple of so much.
    Argument multipleOf(int number) const {
        return with([&](Argument& a) { a.step = number; });
    }
    // Tests have no larger values, though these are legal.
    Argument upTo(Vsp64s largest) const {
        return with([&](Argument& a) { a.most = largest; });
    }
    // Only an initialiser and the functions themselves write the state.
    Argument alwaysInitialised() const {
        return with([&](Argument& a) { a.onlyInitialised = true; });
    }
    // The state is laid out by its address modulo 16 or so, and points to tables of the program or library that initialised
    // it.
    Argument withAddresses(std::size_t modulo = 16) const {
        return with([&](Argument& a) { a.onlyInitialised = a.hasAddresses = true, a.line = modulo; });
    }
    // With a positive status only the first elements count, or the array is left as it was.
    Argument firstOnWarning(int number) const {
        return with([&](Argument& a) { a.onWarning = number; });
    }
    Argument unchangedOnWarning() const {
        return with([&](Argument& a) { a.keptOnWarning = true; });
    }

    // The array is left as it was unless a call writes this number to the first element of another one.
    Argument onlyWhenWritten(int position, Vsp64s number) const {
        return with([&](Argument& a) { a.onlyWith = {position, number}; });
    }

    bool pointer() const { return kind != Kind::value; }
    bool written() const { return kind != Kind::value && kind != Kind::in; }
    bool checked() const { return limits || !choices.empty(); }

  private:
    template <class Change>
    Argument with(const Change& change) const {
        Argument changed = *this;
        change(changed);
        return changed;
    }
    static bool contains(const std::vector<Vsp64s>& all, Vsp64s x) {
        for (const Vsp64s y : all)
            if (x == y) return true;
        return false;
    }
};

// Arrays: elements that are read, written, or both.
inline Argument in(Count elements) { return {.kind = Argument::Kind::in, .elements = std::move(elements)}; }
inline Argument out(Count elements) { return {.kind = Argument::Kind::out, .elements = std::move(elements)}; }
inline Argument io(Count elements) { return {.kind = Argument::Kind::io, .elements = std::move(elements)}; }
// A state of so many bytes. Where the initialiser is given, calls begin with what it makes and with any bytes; else with
// any.
inline Argument state(Count bytes, Initialiser initialise = {}) {
    return {.kind = Argument::Kind::state, .elements = std::move(bytes), .initialise = std::move(initialise)};
}
// Arrays of so many elements each, behind an array of pointers to them.
inline Argument rows(Count number, Argument each) { return each.rows = std::move(number), each; }
// A written word that is always this number: the size of a state.
inline Argument size(Vsp64s bytes) { return {.kind = Argument::Kind::out, .elements = 1, .always = bytes}; }

// Values: any, or within limits.
inline Argument value() { return {.kind = Argument::Kind::value}; }
inline Argument limited(VspStatus error, Vsp64s low, Vsp64s high) { return value().holding(error, low, high); }
inline Argument limited(VspStatus error, std::function<Limits(const Values&)> by) {
    return value().holding(error, [by = std::move(by)](const Values& v, int) { return by(v); });
}
inline Argument range(Vsp64s low, Vsp64s high) { return limited(vspStsRangeErr, low, high); }
inline Argument code(Vsp64s low, Vsp64s high) { return limited(vspStsCodeRangeErr, low, high); }
inline Argument scale(Vsp64s low = 0, Vsp64s high = std::numeric_limits<Vsp32s>::max()) {
    return limited(vspStsScaleRangeErr, low, high);
}
inline Argument oneOf(std::vector<Vsp64s> all, VspStatus error = vspStsRangeErr) {
    return value().holdingOneOf(error, std::move(all));
}
inline Argument length(Vsp64s low = 1, Vsp64s high = std::numeric_limits<Vsp32s>::max()) {
    return limited(vspStsSizeErr, low, high);
}

// Where an argument stands among the unnamed arrays of a recorded case.
struct Place {
    int before = -1, after = -1;    // the items with its content before and after the call
    int element = -1;               // a single element of the item
    int beforeAt = 0, afterAt = 0;  // the element of the array that the item begins with
    Vsp64s constant = 0;
    bool given = false;  // it is the constant

    Place to(int item) const {
        return changed([&](Place& p) { p.after = item; });
    }
    Place at(int first) const {
        return changed([&](Place& p) { p.beforeAt = p.afterAt = first; });
    }
    Place from(int first) const {
        return changed([&](Place& p) { p.beforeAt = first; });
    }
    Place resultAt(int first) const {
        return changed([&](Place& p) { p.afterAt = first; });
    }
    Place operator[](int number) const {
        return changed([&](Place& p) { p.element = number; });
    }

  private:
    template <class Change>
    Place changed(const Change& change) const {
        Place p = *this;
        change(p);
        return p;
    }
};
inline Place item(int number) { return {.before = number}; }
inline Place result(int number) { return {.after = number}; }
inline Place constant(Vsp64s number) { return {.constant = number, .given = true}; }
inline Place unrecorded() { return {}; }

// A file of recorded calls, tests/<family>/data/<file>.vec.
struct Recording {
    std::string file;
    bool stream = false;          // the cases belong to one state and begin with a start mark
    int kind = -1;                // behind the start mark of a stream that several functions share
    std::vector<Place> places;    // of the arguments; none: in the usual order
    int statusItem = -1;          // where places are given
    Initialiser initialise;       // in place of the state's
    bool startsWithKind = false;  // there is no start mark: the calls of the stream include the initialiser's
};

union Cell {
    Vsp64s integer;
    double real;
    void* pointer;
};

struct ParameterType {
    char type;         // h, i, f, d, B as in the recorded items, u for unsigned 32 bits, s for anything else
    std::size_t size;  // of an element
    bool pointer, constant, rows;
};

// A function of the library with its arguments.
struct Function {
    using Any = void (*)();

    std::string name, family;
    std::vector<ParameterType> types;
    std::vector<Argument> arguments;
    std::size_t slot;      // its place in the table
    Any direct = nullptr;  // one that is not exported and checks nothing
    VspStatus (*invoke)(Any, const Cell*);
    std::vector<Recording> recordings;
    bool named = false, withoutRecordings = false;
    std::vector<VspStatus> order{vspStsNullPtrErr, vspStsSizeErr, vspStsRangeErr, vspStsCodeRangeErr, vspStsScaleRangeErr};

    // Errors in the order of the checks, where it is another one.
    Function checks(std::initializer_list<VspStatus> inOrder) const;
    // Recorded calls: without any of these the file has the function's name, and the usual order of items.
    Function recorded(const std::string& file, std::vector<Place> places = {}, int statusItem = -1) const;
    Function recorded(std::vector<Place> places, int statusItem = -1) const {
        return recorded(name, std::move(places), statusItem);
    }
    Function stream(const std::string& file, int kind = -1, std::vector<Place> places = {}, int statusItem = -1,
                    Initialiser initialise = {}) const;
    // A stream whose calls begin with the number of their function, one of which initialises the state.
    Function operation(const std::string& file, int number) const;
    Function notRecorded() const;
    Function recordedWithNames() const;  // the layout of arguments with names

    VspStatus call(const Api& api, const Cell* cells) const {
        return invoke(direct != nullptr ? direct : reinterpret_cast<const Any*>(&api)[slot], cells);
    }
};

// A part of a family's functions. Definitions of this type in the tables are all that the tests and fuzzers look at.
class Described {
  public:
    Described(const std::string& family, std::vector<Function> functions);
    static const std::vector<Function>& all();  // in the order of their names
};

namespace describing {

// Of complex values the type of their parts.
template <class T>
constexpr char typeOf() {
    if constexpr (requires { &T::re; })
        return typeOf<std::remove_cvref_t<decltype(std::declval<T>().re)>>();
    else
        return std::is_same_v<T, Vsp8u>                                 ? 'B'
               : std::is_same_v<T, Vsp16s> || std::is_same_v<T, Vsp16u> ? 'h'
               : std::is_same_v<T, Vsp32s>                              ? 'i'
               : std::is_same_v<T, Vsp32u>                              ? 'u'
               : std::is_same_v<T, Vsp32f>                              ? 'f'
               : std::is_same_v<T, Vsp64f>                              ? 'd'
                                                                        : 's';
}

template <class P>
constexpr ParameterType parameterType() {
    using Row = std::remove_cv_t<std::remove_pointer_t<P>>;
    using Target = std::remove_pointer_t<std::conditional_t<std::is_pointer_v<Row>, Row, P>>;
    using T = std::remove_cv_t<Target>;
    std::size_t bytes = 1;
    if constexpr (requires { sizeof(T); } && !std::is_void_v<T>) bytes = sizeof(T);
    return {typeOf<T>(), bytes, std::is_pointer_v<P>, std::is_pointer_v<P> && std::is_const_v<Target>,
            std::is_pointer_v<Row>};
}

template <class P>
P unpack(const Cell& cell) {
    if constexpr (std::is_pointer_v<P>)
        return static_cast<P>(cell.pointer);
    else if constexpr (std::is_floating_point_v<P>)
        return P(cell.real);
    else
        return P(cell.integer);
}

template <class... P>
VspStatus invoke(Function::Any function, const Cell* cells) {
    return [&]<std::size_t... I>(std::index_sequence<I...>) {
        return reinterpret_cast<VspStatus (*)(P...)>(function)(unpack<P>(cells[I])...);
    }
    (std::index_sequence_for<P...>());
}

Function make(const char* name, std::size_t slot, std::vector<ParameterType> types, std::vector<Argument> arguments,
              VspStatus (*invoke)(Function::Any, const Cell*));

template <class... P>
Function function(const char* name, VspStatus (*Api::*member)(P...), std::initializer_list<Argument> arguments) {
    const std::size_t slot =
        std::size_t(reinterpret_cast<const char*>(&(kApi_y8.*member)) - reinterpret_cast<const char*>(&kApi_y8)) /
        sizeof(Function::Any);
    return make(name, slot, {parameterType<P>()...}, arguments, invoke<P...>);
}

// One that is not exported: its calls and levels are tested, but no checks.
template <class... P>
Function internal(const char* name, VspStatus (*function)(P...), std::initializer_list<Argument> arguments) {
    Function f = make(name, 0, {parameterType<P>()...}, arguments, invoke<P...>);
    f.direct = reinterpret_cast<Function::Any>(function);
    return f;
}

}  // namespace describing

#define VSPSC_FUNCTION(name, ...) ::vsp::test::describing::function(#name, &::vsp::Api::name, {__VA_ARGS__})

}  // namespace vsp::test
