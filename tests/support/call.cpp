#include "support/call.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <memory>
#include <random>

#include "support/upper_halves.h"

namespace vsp::test {

namespace {

using Kind = Argument::Kind;

// A number of elements, also where it comes from an illegal argument.
constexpr std::size_t kMost = 1 << 16;
std::size_t bounded(Vsp64s elements) { return std::size_t(std::clamp<Vsp64s>(elements, 0, kMost)); }

Limits limitsOfType(char type) {
    return type == 'B'   ? Limits{0, 255}
           : type == 'h' ? Limits{-32768, 32767}
           : type == 'u' ? Limits{0, 0xFFFFFFFF}
                         : Limits{};
}

bool contains(const std::vector<Vsp64s>& all, Vsp64s x) { return std::find(all.begin(), all.end(), x) != all.end(); }

bool isLegal(const Argument& a, double x, const Values& values, int element = 0) {
    if (!a.choices.empty()) return contains(a.choices, Vsp64s(x));
    if (!a.limits) return true;
    const Limits limits = a.limits(values, element);
    const bool low = x >= double(limits.low), high = x <= double(limits.high) || (x > 0 && limits.high == Limits().high);
    return low && high && (a.step == 1 || Vsp64s(x) % a.step == 0);
}

VspStatus errorOf(const Argument& a, double x, const Values& values) {
    const double high = a.choices.empty() && a.limits ? double(a.limits(values, 0).high) : 0;
    return a.errorAbove != vspStsNoErr && x > high ? a.errorAbove : a.error;
}

// Numbers that an argument or element must not be: beside its limits, and extremes.
std::vector<double> illegal(const Argument& a, char type, const Values& values, int element) {
    std::vector<double> candidates;
    if (a.choices.empty()) {
        const Limits limits = a.limits(values, element);
        const double beside = hasIntegers(type) ? 1 : 0.01;
        candidates = {double(limits.low) - beside, double(limits.low) + beside, double(limits.high) - beside,
                      double(limits.high) + beside};
    } else {
        const auto [least, most] = std::minmax_element(a.choices.begin(), a.choices.end());
        for (Vsp64s x = *least - 2; x <= *most + 2; x++) candidates.push_back(double(x));
    }
    const Limits all = limitsOfType(type);
    candidates.insert(candidates.end(), {0, -1, double(all.low), double(all.high)});
    if (!a.pointer() && !hasIntegers(type)) candidates.insert(candidates.end(), {-HUGE_VAL, double(NAN)});
    std::vector<double> bad;
    for (const double x : candidates) {
        const bool possible = !hasIntegers(type) || (x >= double(all.low) && x <= double(all.high));
        if (possible && !isLegal(a, x, values, element) && std::find(bad.begin(), bad.end(), x) == bad.end())
            bad.push_back(x);
    }
    return bad;
}

}  // namespace

std::size_t widthOf(char type) { return type == 'B' || type == 's' ? 1 : type == 'h' ? 2 : type == 'd' ? 8 : 4; }

bool hasIntegers(char type) { return type == 'B' || type == 'h' || type == 'i' || type == 'u'; }

template <class Number>
static Number readAt(const Bytes& bytes, char type, std::size_t i) {
    const auto read = [&]<class T>(T x) {
        std::memcpy(&x, bytes.data() + i * sizeof x, sizeof x);
        return Number(x);
    };
    switch (type) {
        case 'h': return read(Vsp16s());  // NOLINT(bugprone-branch-clone): of different types
        case 'i': return read(Vsp32s());
        case 'u': return read(Vsp32u());
        case 'f': return read(Vsp32f());
        case 'd': return read(Vsp64f());
        default: return read(Vsp8u());
    }
}

Vsp64s integerAt(const Bytes& bytes, char type, std::size_t i) { return readAt<Vsp64s>(bytes, type, i); }
double numberAt(const Bytes& bytes, char type, std::size_t i) { return readAt<double>(bytes, type, i); }

void setNumberAt(Bytes& bytes, char type, std::size_t i, double x) {
    const auto write = [&](auto y) { std::memcpy(bytes.data() + i * sizeof y, &y, sizeof y); };
    switch (type) {
        case 'h': return write(Vsp16s(Vsp64s(x)));
        case 'i': return write(Vsp32s(Vsp64s(x)));
        case 'u': return write(Vsp32u(Vsp64s(x)));
        case 'f': return write(Vsp32f(x));
        case 'd': return write(Vsp64f(x));
        default: return write(Vsp8u(Vsp64s(x)));
    }
}

Call::Call(const Function& f)
    : function(&f), cells(f.arguments.size()), arrays(f.arguments.size()), same(f.arguments.size(), -1) {
    for (Cell& cell : cells) cell.integer = 0;
}

Values Call::values() const {
    Values values(cells.size());
    for (std::size_t i = 0; i < cells.size(); i++)
        if (!function->types[i].pointer && hasIntegers(function->types[i].type)) values[i] = cells[i].integer;
    return values;
}

bool Call::used(std::size_t argument) const {
    const Argument& a = function->arguments[argument];
    return !a.used || a.used(values());
}

std::size_t Call::elements(std::size_t argument) const {
    if (!used(argument)) return 0;
    const std::size_t each = bounded(function->arguments[argument].elements(values())) + history(argument);
    return each * rows(argument) > kMost ? rows(argument) : each * rows(argument);
}

std::size_t Call::rows(std::size_t argument) const {
    return function->types[argument].rows ? bounded(function->arguments[argument].rows(values())) : 1;
}

std::size_t Call::history(std::size_t argument) const { return bounded(function->arguments[argument].history(values())); }

double Call::number(std::size_t argument) const {
    return hasIntegers(function->types[argument].type) ? double(cells[argument].integer) : cells[argument].real;
}

VspStatus Call::expectedError() const {
    const auto& order = function->order;
    const Values v = values();
    for (const bool late : {false, true}) {
        std::size_t first = order.size();
        const auto report = [&](VspStatus error) {
            const auto place = std::size_t(std::find(order.begin(), order.end(), error) - order.begin());
            if (place == order.size()) std::fprintf(stderr, "%s: error %d has no place\n", function->name.c_str(), error);
            first = std::min(first, place);
        };
        // Limits that depend on other arguments are looked at when these are good.
        for (const bool dependent : {false, true})
            for (std::size_t i = 0; i < cells.size(); i++) {
                const Argument& a = function->arguments[i];
                const char type = function->types[i].type;
                if (((a.used && !a.known) || a.late) != late || !used(i)) continue;
                if (a.pointer() && !arrays[i] && !inPlace(i)) report(vspStsNullPtrErr);
                if (a.error == vspStsNoErr || a.perhaps || a.dependent != dependent) continue;
                if (dependent && first < order.size() && !a.known) continue;
                if (!a.pointer() && !isLegal(a, number(i), v)) report(errorOf(a, number(i), v));
                const std::size_t n = a.pointer() && arrays[i] ? arrays[i]->size() / widthOf(type) : 0;
                for (std::size_t e = 0; e < n; e++)
                    if (!isLegal(a, numberAt(*arrays[i], type, e), v, int(e))) report(a.error);
            }
        if (first < order.size()) return order[first];
    }
    return vspStsNoErr;
}

bool Call::mayGive(VspStatus error) const {
    for (const Argument& a : function->arguments)
        if (a.perhaps && a.error == error) return true;
    return false;
}

namespace {

// The array of an argument in guarded memory, one piece for each row.
class Memory {
  public:
    Memory(const Call& call, std::size_t argument, Guard guard, std::size_t gap)
        : size_(call.function->types[argument].size), history_(call.history(argument) * size_) {
        const Bytes& bytes = *call.arrays[argument];
        const std::size_t rows = call.rows(argument), row = rows == 0 ? 0 : bytes.size() / rows;
        const Argument& a = call.function->arguments[argument];
        const std::size_t toMultiple =
            a.hasAddresses && guard == Guard::end ? (a.line - bytes.size() % a.line) % a.line : 0;
        const std::size_t away = gap * (a.kind == Kind::state ? a.line : size_) + toMultiple;
        for (std::size_t i = 0; i < rows; i++) {
            const auto begin = bytes.begin() + std::ptrdiff_t(i * row);
            rows_.emplace_back(Bytes(begin, begin + std::ptrdiff_t(row)), guard, away);
            pointers_.push_back(rows_.back().data() + history_);
        }
        if (call.function->types[argument].rows) table_ = std::make_unique<Guarded<std::byte*>>(pointers_, guard);
    }
    void* pointer() { return table_ ? static_cast<void*>(table_->data()) : pointers_[0]; }
    bool changedOutside() const {
        return std::any_of(rows_.begin(), rows_.end(), [](const auto& row) { return row.changedOutside(); });
    }
    bool changedPointers() const { return table_ && table_->values() != pointers_; }
    Bytes values(bool withHistory) const {
        Bytes all;
        for (const auto& row : rows_) all.insert(all.end(), row.begin() + (withHistory ? 0 : history_), row.end());
        return all;
    }

  private:
    std::size_t size_, history_;
    std::list<Guarded<std::byte>> rows_;
    std::vector<std::byte*> pointers_;
    std::unique_ptr<Guarded<std::byte*>> table_;
};

}  // namespace

Result run(const Api& api, const Call& call, Guard guard, std::size_t gap) {
    static const GuardedPages nothing(1);  // what follows its end cannot be touched
    const Function& f = *call.function;
    const bool bad = call.expectedError() != vspStsNoErr;
    for (int attempt = 0;; attempt++) {
        std::vector<std::unique_ptr<Memory>> memory(call.cells.size());
        std::vector<Cell> cells = call.cells;
        for (std::size_t i = 0; i < cells.size(); i++) {
            if (!f.arguments[i].pointer()) continue;
            cells[i].pointer = nullptr;
            if (!call.arrays[i]) continue;
            if ((bad && !f.arguments[i].checked()) || !call.used(i)) {
                cells[i].pointer = nothing.end();
            } else {
                memory[i] = std::make_unique<Memory>(call, i, guard, gap);
                cells[i].pointer = memory[i]->pointer();
            }
        }
        for (std::size_t i = 0; i < cells.size(); i++)
            if (call.inPlace(i)) cells[i].pointer = cells[std::size_t(call.same[i])].pointer;
        Result result{f.call(api, cells.data()), std::vector<Bytes>(cells.size()), upperHalvesInUse()};
        for (std::size_t i = 0; i < cells.size(); i++) {
            const auto& own = call.inPlace(i) ? memory[std::size_t(call.same[i])] : memory[i];
            if (!own) {
                if (call.arrays[i]) result.arrays[i] = *call.arrays[i];
                continue;
            }
            if (own->changedOutside() || own->changedPointers())
                std::fprintf(stderr, "%s: memory outside of argument %zu has changed\n", f.name.c_str(), i);
            if (own->changedPointers()) std::abort();
            result.arrays[i] = own->values(!call.inPlace(i));
        }
        // A change of threads may make the processor say so once.
        if (!result.upperHalves || attempt == 2) return result;
    }
}

std::string differenceBetween(const Call& call, const Result& expected, const Result& result) {
    if (result.status != expected.status)
        return "the status is " + std::to_string(result.status) + ", not " + std::to_string(expected.status);
    const auto& types = call.function->types;
    const bool floats = std::any_of(types.begin(), types.end(), [](const ParameterType& t) { return t.type == 'f'; });
    for (std::size_t i = 0; i < expected.arrays.size(); i++) {
        const char type = types[i].type == 's' && floats ? 'f' : types[i].type;  // a state of numbers, then
        const std::size_t width = widthOf(type);
        for (std::size_t e = 0; e < expected.arrays[i].size() / width; e++) {
            if (std::memcmp(&expected.arrays[i][e * width], &result.arrays[i][e * width], width) == 0) continue;
            const double is = numberAt(result.arrays[i], type, e), wanted = numberAt(expected.arrays[i], type, e);
            if (std::isnan(is) && std::isnan(wanted)) continue;  // which of several NaN a sum hands on is not defined
            return "argument " + std::to_string(i) + "[" + std::to_string(e) + "] is " + std::to_string(is) + ", not " +
                   std::to_string(wanted);
        }
    }
    return {};
}

std::string problemOf(const Call& call, const Result& result) {
    const Function& f = *call.function;
    const VspStatus error = call.expectedError();
    const auto tell = [](VspStatus status) { return std::to_string(status); };
    if (error != vspStsNoErr && result.status != error)
        return "the status is " + tell(result.status) + ", expected " + tell(error);
    if (error == vspStsNoErr && result.status < 0 && !call.mayGive(result.status))
        return "the status is " + tell(result.status) + " for good arguments";
    for (std::size_t i = 0; i < f.arguments.size(); i++) {
        const Argument& a = f.arguments[i];
        if (!call.arrays[i]) continue;
        bool overwritten = false;
        for (std::size_t k = 0; k < call.same.size(); k++)
            overwritten = overwritten || (call.same[k] == int(i) && f.arguments[k].written());
        const bool mayChange =
            result.status >= 0 && (a.written() || overwritten) && !(a.keptOnWarning && result.status > 0);
        const auto begin = call.arrays[i]->begin();  // the history never changes
        const auto end = mayChange ? begin + std::ptrdiff_t(call.history(i) * f.types[i].size) : call.arrays[i]->end();
        if (!std::equal(begin, end, result.arrays[i].begin())) return "argument " + std::to_string(i) + " has changed";
        if (a.always >= 0 && result.status >= 0 && integerAt(result.arrays[i], f.types[i].type, 0) != a.always)
            return "argument " + std::to_string(i) + " is not " + std::to_string(a.always);
    }
    if (result.upperHalves) return "upper halves of registers are in use";
    return {};
}

namespace {

// Of the states that the same initialiser makes.
std::size_t keyOf(const Argument& a) {
    const auto* function = a.initialise.target<void (*)(const Api&, int, void*)>();
    return a.initialise.target_type().hash_code() + (function == nullptr ? 0 : reinterpret_cast<std::size_t>(*function));
}

}  // namespace

std::size_t Draw::combinations(const Function& f) {
    std::size_t product = 1;
    for (std::size_t i = 0; i < f.arguments.size(); i++) {
        const Argument& a = f.arguments[i];
        if (a.pointer() || a.dependent || !a.checked()) continue;
        Vsp64s n = Vsp64s(a.choices.size());
        if (a.choices.empty()) {
            const Limits limits = a.limits({}, 0);
            n = std::min(limits.high, a.most) - limits.low + 1;
        }
        if (n <= 512) product *= std::size_t(n);
        if (product > 5000) return 0;
    }
    return product;
}

// Either any number in the limits, or one of any magnitude, or a limit.
Vsp64s Draw::integer(const Function& f, std::size_t argument, Limits limits) {
    const Limits all = limitsOfType(f.types[argument].type);
    const Vsp64s low = std::max(limits.low, all.low), high = std::max(low, std::min(limits.high, all.high));
    const auto inLimits = [&](Vsp64s x) { return std::clamp(x, low, high); };
    switch (random_() % 8) {
        case 0: return low;
        case 1: return high;
        case 2:
        case 3:
        case 4: return low + Vsp64s(random_()) % (high - low + 1);
        default: {
            const unsigned shift = random_() % 32;
            const Vsp64s magnitude = Vsp32s(random_()) >> shift;
            return inLimits(low > 0 || high < 0 ? low + std::abs(magnitude) : magnitude);
        }
    }
}

double Draw::real(const Argument& a) {
    const double kValues[] = {0, 1, -1, 0.5, 32767, -32768, double(Vsp32s(random_())) / 65536, double(random_()) * 0x1p-32};
    const double x = kValues[random_() % 8];
    if (!a.limits) return x;
    const Limits limits = a.limits({}, 0);
    return std::clamp(x, double(limits.low), double(limits.high));
}

Bytes Draw::contents(const Call& call, std::size_t argument, bool faults) {
    const Function& f = *call.function;
    const Argument& a = f.arguments[argument];
    const char type = f.types[argument].type;
    if (a.kind == Kind::state && a.initialise && (a.onlyInitialised || !oneIn(4))) {
        const std::size_t key = keyOf(a), bytes = call.elements(argument);
        if (!states_.contains(key) || states_[key].size() != bytes || oneIn(100)) {
            Guarded<std::byte> memory(bytes, Guard::begin);
            a.initialise(kApi_y8, 1, memory.data());
            states_[key] = memory.values();
        }
        return states_[key];
    }
    Bytes bytes(call.elements(argument) * f.types[argument].size);
    const char as = type != 's' ? type : bytes.size() % 2 == 0 ? 'h' : 'B';  // structures and states are words too
    const std::size_t width = widthOf(as), n = bytes.size() / width;
    const unsigned pattern = random_() % 10, shift = random_() % 16, period = 1 + random_() % 32;
    const Limits all = limitsOfType(as);
    std::mt19937 elements(random_());  // so that long arrays do not use up short inputs
    const auto any = [&] {
        std::uint32_t x = pattern == 7 ? random_() << 16 : std::uint32_t(elements());
        if (pattern == 7) x ^= random_();
        return Vsp32s(x) % (all.high + 1);
    };
    for (std::size_t i = 0; i < n; i++) {
        Vsp64s x = 0;
        switch (pattern) {
            case 0: break;
            case 1: x = i % 2 == 0 ? all.high : all.low; break;
            case 2: x = all.high; break;
            case 3: x = all.low; break;
            case 4: x = i / period % 2 == 0 ? all.high : all.low; break;
            case 5: x = any(); break;
            case 6:
            case 7: x = any() >> shift; break;
            default: x = elements() % 5 == 0 ? (elements() % 2 == 0 ? all.high : all.low) : any() >> elements() % 31;
        }
        if (pattern == 7 && i >= period)
            std::memcpy(&bytes[i * width], &bytes[(i - period) * width], width);
        else  // real numbers of any magnitude around that of samples
            setNumberAt(bytes, as, i, hasIntegers(as) ? double(x) : double(x) / 65536);
    }
    const bool legal = a.error == vspStsNoErr || a.perhaps ? !oneIn(4) : !faults || !oneIn(16);
    const Values values = call.values();
    for (std::size_t i = 0; a.checked() && legal && i < n; i++) {
        if (isLegal(a, numberAt(bytes, as, i), values, int(i))) continue;
        const double x = !hasIntegers(as)    ? real(a)
                         : a.choices.empty() ? double(integer(f, argument, a.limits(values, int(i))))
                                             : double(a.choices[random_() % a.choices.size()]);
        setNumberAt(bytes, as, i, x);
    }
    return bytes;
}

Call Draw::call(const Function& f, std::size_t number, bool faults) {
    Call call(f);
    const bool counted = combinations(f) > 0;
    for (const bool dependent : {false, true})
        for (std::size_t i = 0; i < f.arguments.size(); i++) {
            const Argument& a = f.arguments[i];
            if (a.pointer() || a.dependent != dependent) continue;
            if (!hasIntegers(f.types[i].type)) {
                call.cells[i].real = real(a);
                continue;
            }
            const Values values = call.values();
            const Limits all = limitsOfType(f.types[i].type);
            Vsp64s x = 0;
            if (!a.choices.empty()) {
                x = a.choices[(counted ? number : random_()) % a.choices.size()];
                number /= a.choices.size();
            } else if (!a.limits) {
                x = integer(f, i, all);
            } else {
                Limits limits = a.limits(values, 0);
                limits.high = std::max(limits.low, std::min(limits.high, a.most));
                const std::size_t n = std::size_t(limits.high - limits.low + 1);
                if (!dependent && counted && n <= 512) {
                    x = limits.low + Vsp64s(number % n);
                    number /= n;
                } else if (a.error == vspStsSizeErr) {
                    const std::uint32_t most = oneIn(8) ? 400 : 90;
                    x = limits.low + Vsp64s(random_() % most);
                    x = std::min(x, limits.high);
                } else {
                    x = integer(f, i, limits);
                }
                x -= (x % a.step + a.step) % a.step;
                if (x < limits.low) x += a.step;
            }
            if (faults && a.checked() && a.error != vspStsNoErr && oneIn(16)) {
                const Vsp64s other = integer(f, i, all);  // what is legal may be too large for arrays
                if (!isLegal(a, double(other), values)) x = other;
            }
            call.setInteger(i, x);
        }
    for (std::size_t i = 0; i < f.arguments.size(); i++) {
        const Argument& a = f.arguments[i];
        if (!a.pointer() || (faults && f.direct == nullptr && oneIn(64)) || (!call.used(i) && oneIn(2))) continue;
        call.arrays[i] = contents(call, i, faults);
        if (a.sources.empty() || !oneIn(3)) continue;
        const int source = a.sources[random_() % a.sources.size()];
        if (call.inPlace(std::size_t(source)) || (source < int(i) && !call.arrays[std::size_t(source)])) continue;
        call.same[i] = source;
        call.arrays[i].reset();
    }
    return call;
}

void Draw::keep(const Call& call, const Result& result) {
    for (std::size_t i = 0; i < call.cells.size(); i++) {
        const Argument& a = call.function->arguments[i];
        if (a.kind == Kind::state && a.initialise && call.arrays[i] && call.expectedError() == vspStsNoErr)
            if (const auto found = states_.find(keyOf(a)); found != states_.end() && found->second == *call.arrays[i])
                found->second = result.arrays[i];
    }
}

std::vector<Fault> faultsOf(const Call& legal) {
    const Function& f = *legal.function;
    const Values values = legal.values();
    std::vector<Fault> faults;
    for (std::size_t i = 0; i < f.arguments.size(); i++) {
        const Argument& a = f.arguments[i];
        const char type = f.types[i].type;
        if (a.pointer() && legal.used(i) && f.direct == nullptr) {
            faults.push_back({i, [i](Call& c) {
                                  c.arrays[i].reset();
                                  c.same[i] = -1;
                              }});
        }
        if (a.error == vspStsNoErr || a.perhaps) continue;
        const std::size_t n = a.pointer() ? legal.elements(i) * f.types[i].size / widthOf(type) : 1;
        for (std::size_t e = 0; e < n; e++)
            for (const double x : illegal(a, type, values, int(e)))
                faults.push_back({i, [=](Call& c) {
                                      if (!a.pointer() && hasIntegers(type)) c.setInteger(i, Vsp64s(x));
                                      if (!a.pointer() && !hasIntegers(type)) c.cells[i].real = x;
                                      if (a.pointer() && c.arrays[i]) setNumberAt(*c.arrays[i], type, e, x);
                                  }});
    }
    return faults;
}

}  // namespace vsp::test
