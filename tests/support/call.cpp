#include "support/call.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <list>
#include <random>

#include "support/upper_halves.h"

namespace vsp::test {

namespace {

using Kind = Argument::Kind;

// A number of elements, also where it comes from an illegal argument.
std::size_t bounded(Vsp64s elements) { return std::size_t(std::clamp<Vsp64s>(elements, 0, 1 << 16)); }

Limits limitsOfType(char type) { return type == 'B' ? Limits{0, 255} : type == 'h' ? Limits{-32768, 32767} : Limits{}; }

bool hasIntegers(char type) { return type == 'B' || type == 'h' || type == 'i'; }

bool contains(const std::vector<Vsp64s>& all, Vsp64s x) { return std::find(all.begin(), all.end(), x) != all.end(); }

bool isLegal(const Argument& a, double x, const Values& values, int element = 0) {
    if (!a.choices.empty()) return contains(a.choices, Vsp64s(x));
    if (!a.limits) return true;
    const Limits limits = a.limits(values, element);
    const bool low = x >= double(limits.low), high = x <= double(limits.high) || (x > 0 && limits.high == Limits().high);
    return low && high && (a.step == 1 || Vsp64s(x) % a.step == 0);
}

VspStatus errorOf(const Argument& a, double x, const Values& values) {
    return a.errorAbove != vspStsNoErr && x > double(a.limits(values, 0).high) ? a.errorAbove : a.error;
}

// Integers that an argument or element must not be: beside its limits, and extremes.
std::vector<Vsp64s> illegal(const Argument& a, char type, const Values& values, int element = 0) {
    std::vector<Vsp64s> candidates;
    Limits near{};
    if (a.choices.empty()) {
        near = a.limits(values, element);
        for (const Vsp64s x : {near.low, near.high})
            for (const Vsp64s away : {-1, 1}) candidates.push_back(x + away);
    } else {
        const auto [least, most] = std::minmax_element(a.choices.begin(), a.choices.end());
        for (Vsp64s x = *least - 2; x <= *most + 2; x++) candidates.push_back(x);
    }
    const Limits all = limitsOfType(type);
    candidates.insert(candidates.end(), {0, -1, all.low, all.high});
    std::vector<Vsp64s> bad;
    for (const Vsp64s x : candidates)
        if (x >= all.low && x <= all.high && !isLegal(a, double(x), values, element) && !contains(bad, x)) bad.push_back(x);
    return bad;
}

}  // namespace

Vsp64s integerAt(const Bytes& bytes, char type, std::size_t i) {
    const auto read = [&]<class T>(T x) {
        std::memcpy(&x, bytes.data() + i * sizeof x, sizeof x);
        return Vsp64s(x);
    };
    return type == 'B' ? read(Vsp8u()) : type == 'h' ? read(Vsp16s()) : read(Vsp32s());
}

void setIntegerAt(Bytes& bytes, char type, std::size_t i, Vsp64s x) {
    const auto write = [&](auto y) { std::memcpy(bytes.data() + i * sizeof y, &y, sizeof y); };
    if (type == 'B') write(Vsp8u(x));
    if (type == 'h') write(Vsp16s(x));
    if (type == 'i') write(Vsp32s(x));
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
    return bounded(function->arguments[argument].elements(values())) + history(argument);
}

std::size_t Call::history(std::size_t argument) const { return bounded(function->arguments[argument].history(values())); }

double Call::number(std::size_t argument) const {
    return hasIntegers(function->types[argument].type) ? double(cells[argument].integer) : cells[argument].real;
}

VspStatus Call::expectedError() const {
    const auto& order = function->order;
    const Values v = values();
    std::size_t first = 2 * order.size();
    const auto report = [&](VspStatus error, bool late) {
        const auto place = std::size_t(std::find(order.begin(), order.end(), error) - order.begin());
        if (place == order.size()) std::fprintf(stderr, "%s: error %d has no place\n", function->name.c_str(), error);
        first = std::min(first, place + (late ? order.size() : 0));
    };
    // What depends on other arguments is looked at when these are good.
    for (const bool dependent : {false, true})
        for (const bool late : {false, true}) {
            for (std::size_t i = 0; i < cells.size(); i++) {
                const Argument& a = function->arguments[i];
                if (bool(a.used) != late || (late && !used(i))) continue;
                if (a.pointer() && !arrays[i] && !inPlace(i)) report(vspStsNullPtrErr, late);
                if (a.error == vspStsNoErr || a.dependent != dependent) continue;
                if (!a.pointer() && !isLegal(a, number(i), v)) report(errorOf(a, number(i), v), late);
                const std::size_t n = a.pointer() && arrays[i] ? arrays[i]->size() / function->types[i].size : 0;
                for (std::size_t e = 0; e < n; e++)
                    if (!isLegal(a, double(integerAt(*arrays[i], function->types[i].type, e)), v, int(e)))
                        report(a.error, late);
            }
            if (first < 2 * order.size()) return order[first % order.size()];
        }
    return vspStsNoErr;
}

Result run(const Api& api, const Call& call, Guard guard, std::size_t gap) {
    static const GuardedPages nothing(1);  // what follows its end cannot be touched
    const Function& f = *call.function;
    const bool bad = call.expectedError() != vspStsNoErr;
    for (int attempt = 0;; attempt++) {
        std::list<Guarded<std::byte>> memory;
        std::vector<Guarded<std::byte>*> own(call.cells.size());
        std::vector<Cell> cells = call.cells;
        for (std::size_t i = 0; i < cells.size(); i++) {
            const Argument& a = f.arguments[i];
            if (!a.pointer()) continue;
            cells[i].pointer = nullptr;
            if (call.inPlace(i)) {
                continue;
            } else if (call.arrays[i] && ((bad && !a.checked()) || !call.used(i))) {
                cells[i].pointer = nothing.end();
            } else if (call.arrays[i]) {
                const std::size_t away = gap * (a.kind == Kind::state ? 16 : f.types[i].size);
                own[i] = &memory.emplace_back(*call.arrays[i], guard, away);
                cells[i].pointer = own[i]->data() + call.history(i) * f.types[i].size;
            }
        }
        for (std::size_t i = 0; i < cells.size(); i++)
            if (call.inPlace(i)) {
                own[i] = own[std::size_t(call.same[i])];
                cells[i].pointer = cells[std::size_t(call.same[i])].pointer;
            }
        Result result{f.call(api, cells.data()), std::vector<Bytes>(cells.size()), upperHalvesInUse()};
        for (std::size_t i = 0; i < cells.size(); i++) {
            if (own[i] == nullptr) {
                if (call.arrays[i]) result.arrays[i] = *call.arrays[i];
                continue;
            }
            if (own[i]->changedOutside())
                std::fprintf(stderr, "%s: memory outside of argument %zu has changed\n", f.name.c_str(), i);
            result.arrays[i] = own[i]->values();
            if (call.inPlace(i)) {  // the part behind the pointer
                const auto begin = result.arrays[i].begin();
                result.arrays[i].erase(begin,
                                       begin + std::ptrdiff_t(call.history(std::size_t(call.same[i])) * f.types[i].size));
            }
        }
        // A change of threads may make the processor say so once.
        if (!result.upperHalves || attempt == 2) return result;
    }
}

std::string problemOf(const Call& call, const Result& result) {
    const Function& f = *call.function;
    const VspStatus error = call.expectedError();
    const auto tell = [](VspStatus status) { return std::to_string(status); };
    if (error != vspStsNoErr && result.status != error)
        return "the status is " + tell(result.status) + ", expected " + tell(error);
    if (error == vspStsNoErr && result.status < 0) return "the status is " + tell(result.status) + " for good arguments";
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

std::size_t Draw::combinations(const Function& f) {
    std::size_t product = 1;
    for (std::size_t i = 0; i < f.arguments.size(); i++) {
        const Argument& a = f.arguments[i];
        if (a.pointer() || a.dependent || !a.checked()) continue;
        Vsp64s n = Vsp64s(a.choices.size());
        if (a.choices.empty()) {
            const Limits limits = a.limits({}, 0);
            n = limits.high - limits.low + 1;
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
        const std::size_t key = a.initialise.target_type().hash_code();
        const std::size_t bytes = call.elements(argument);
        if (!states_.contains(key) || states_[key].size() != bytes || oneIn(100)) {
            Guarded<std::byte> memory(bytes);
            a.initialise(kApi_y8, 1, memory.data());
            states_[key] = memory.values();
        }
        return states_[key];
    }
    Bytes bytes(call.elements(argument) * f.types[argument].size);
    // As 16-bit words, unless the type has others; structures and states are words too.
    const char as = hasIntegers(type) ? type : bytes.size() % 2 == 0 && (type == 's') ? 'h' : type == 's' ? 'B' : 'f';
    const std::size_t width = as == 'B' ? 1 : as == 'h' ? 2 : type == 'd' ? 8 : 4;
    const std::size_t n = bytes.size() / width;
    const unsigned pattern = random_() % 10, shift = random_() % 16, period = 1 + random_() % 32;
    const Limits all = limitsOfType(as);
    std::mt19937 elements(random_());  // so that long arrays do not use up short inputs
    const auto any = [&] { return Vsp32s(pattern == 7 ? random_() << 16 ^ random_() : elements()) % (all.high + 1); };
    for (std::size_t i = 0; i < n; i++) {
        Vsp64s x = 0;
        switch (pattern) {
            case 0: break;
            case 1: x = i % 2 == 0 ? all.high : all.low; break;
            case 2: x = all.high; break;
            case 3: x = all.low; break;
            case 4: x = i / period % 2 == 0 ? all.high : all.low; break;
            case 5: x = any(); break;
            case 6: x = any() >> shift; break;
            case 7: x = i < period ? any() >> shift : integerAt(bytes, as == 'f' ? 'i' : as, i - period); break;
            default: x = elements() % 5 == 0 ? (elements() % 2 == 0 ? all.high : all.low) : any() >> elements() % 31;
        }
        if (as != 'f') {
            setIntegerAt(bytes, as, i, x);
        } else if (pattern == 7 && i >= period) {
            std::memcpy(&bytes[i * width], &bytes[(i - period) * width], width);
        } else {  // of any magnitude around that of samples
            const double y = double(x) / 65536;
            const float single = float(y);
            std::memcpy(&bytes[i * width], type == 'd' ? static_cast<const void*>(&y) : &single, width);
        }
    }
    const bool legal = a.error == vspStsNoErr ? !oneIn(4) : !faults || !oneIn(16);
    const Values values = call.values();
    if (a.checked() && legal)
        for (std::size_t i = 0; i < n; i++)
            if (!isLegal(a, double(integerAt(bytes, type, i)), values, int(i)))
                setIntegerAt(bytes, type, i,
                             a.choices.empty() ? integer(f, argument, a.limits(values, int(i)))
                                               : a.choices[random_() % a.choices.size()]);
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
                    x = limits.low + Vsp64s(random_() % (oneIn(8) ? 400 : 90));
                    x = std::min(x, limits.high);
                } else {
                    x = integer(f, i, limits);
                }
                x -= (x % a.step + a.step) % a.step;
                if (x < limits.low) x += a.step;
            }
            if (faults && a.checked() && a.error != vspStsNoErr && oneIn(16)) x = integer(f, i, all);
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
            if (const auto found = states_.find(a.initialise.target_type().hash_code());
                found != states_.end() && found->second == *call.arrays[i])
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
        if (a.error == vspStsNoErr) continue;
        if (!hasIntegers(type)) {
            for (const double x :
                 {double(a.limits({}, 0).low) - 0.01, double(a.limits({}, 0).high) * 1.01, -HUGE_VAL, double(NAN)})
                if (!isLegal(a, x, values)) faults.push_back({i, [=](Call& c) { c.cells[i].real = x; }});
            continue;
        }
        const std::size_t n = a.pointer() ? legal.elements(i) : 1;
        for (std::size_t e = 0; e < n; e++)
            for (const Vsp64s x : illegal(a, type, values, int(e))) {
                if (a.pointer())
                    faults.push_back({i, [=](Call& c) {
                                          if (c.arrays[i]) setIntegerAt(*c.arrays[i], type, e, x);
                                      }});
                else
                    faults.push_back({i, [=](Call& c) { c.setInteger(i, x); }});
            }
    }
    return faults;
}

}  // namespace vsp::test
