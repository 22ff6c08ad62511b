#include "support/recorded_calls.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "support/samples.h"
#include "support/vector_case.h"

namespace vsp::test {

namespace {

using Kind = Argument::Kind;
using Items = std::vector<Item>;

bool isFloat(char type) { return type == 'f' || type == 'd'; }

// An item, or one element of it, in another type.
Bytes converted(const Item& item, char type, int element) {
    const std::size_t n = item.bytes.size() / widthOf(item.type), first = element < 0 ? 0 : std::size_t(element);
    if (element >= 0 && first >= n) throw std::runtime_error("an item has too few elements");
    const std::size_t last = element < 0 ? n : first + 1;
    Bytes bytes((last - first) * widthOf(type));
    if (isFloat(type) != isFloat(item.type)) throw std::runtime_error("an item has another type than the argument");
    for (std::size_t i = first; i < last; i++) {
        if (isFloat(type)) {
            if (type != item.type) throw std::runtime_error("an item has another type than the argument");
            std::copy_n(item.bytes.begin() + std::ptrdiff_t(i * widthOf(type)), widthOf(type),
                        bytes.begin() + std::ptrdiff_t((i - first) * widthOf(type)));
            continue;
        }
        const Vsp64s x = integerAt(item.bytes, item.type, i);
        setNumberAt(bytes, type, i - first, type == 'u' ? double(Vsp32u(x)) : double(x));
        if (type != 'u' && integerAt(bytes, type, i - first) != x)
            throw std::runtime_error("an item does not fit the argument's type");
    }
    return bytes;
}

// Inputs in the order of the arguments, the status, and what is written. Where there is an item less, none is the status,
// which is 0.
std::vector<Place> usualPlaces(const Function& f, int first, int count, int& statusItem) {
    std::vector<Place> places(f.arguments.size());
    for (std::size_t i = 0; i < places.size(); i++) {
        const Kind kind = f.arguments[i].kind;
        if (kind == Kind::value || kind == Kind::in || kind == Kind::io) places[i].before = first++;
    }
    const auto written = std::count_if(f.arguments.begin(), f.arguments.end(),
                                       [](const Argument& a) { return a.kind == Kind::out || a.kind == Kind::io; });
    statusItem = count == first + int(written) ? -1 : first++;
    for (std::size_t i = 0; i < places.size(); i++) {
        const Kind kind = f.arguments[i].kind;
        if (kind != Kind::out && kind != Kind::io) continue;
        places[i].after = first++;
        if (isFloat(f.types[i].type)) first++;  // a tolerance
    }
    return places;
}

// Arbitrary, where the recording has nothing.
Bytes filler(std::size_t bytes) {
    const auto words = samples(bytes / 2 + 1, unsigned(bytes));
    Bytes filled(bytes);
    std::memcpy(filled.data(), words.data(), bytes);
    return filled;
}

RecordedCall fromItems(const Function& f, const Recording& recording, const Items& items) {
    RecordedCall recorded{
        Call(f), 0, vspStsNoErr, std::vector<std::optional<RecordedCall::Expected>>(f.arguments.size()), {}};
    Call& call = recorded.call;
    int first = 0, statusItem = recording.statusItem;
    if (recording.stream && !recording.startsWithKind)
        recorded.start = int(integerAt(items.at(std::size_t(first++)).bytes, items[0].type, 0));
    if (recording.kind >= 0) first++;
    const auto places = recording.places.empty() ? usualPlaces(f, first, int(items.size()), statusItem) : recording.places;
    if (places.size() != f.arguments.size()) throw std::runtime_error("there are more or fewer places than arguments");
    const auto itemAt = [&](int number) -> const Item& { return items.at(std::size_t(number)); };
    if (statusItem >= 0) recorded.status = VspStatus(integerAt(itemAt(statusItem).bytes, 'i', 0));

    for (std::size_t i = 0; i < places.size(); i++) {
        if (f.arguments[i].pointer()) continue;
        const Place& p = places[i];
        const char type = f.types[i].type;
        if (p.given) {
            call.setInteger(i, p.constant);
        } else if (p.before >= 0) {
            const Bytes bytes = converted(itemAt(p.before), type, p.element < 0 ? 0 : p.element);
            if (isFloat(type))
                call.cells[i].real = numberAt(bytes, type, 0);
            else
                call.setInteger(i, integerAt(bytes, type, 0));
        } else {
            throw std::runtime_error("argument " + std::to_string(i) + " has no item");
        }
    }
    for (std::size_t i = 0; i < places.size(); i++) {
        const Argument& a = f.arguments[i];
        if (!a.pointer()) continue;
        const Place& p = places[i];
        const std::string name = "argument " + std::to_string(i);
        const std::size_t size = call.elements(i) * f.types[i].size;
        if (!call.used(i)) {
            for (const int number : {p.before, p.after})
                if (number >= 0 && recording.places.empty() && !itemAt(number).bytes.empty())
                    throw std::runtime_error(name + " is not used, but it is recorded");
            continue;
        }
        call.arrays[i] = filler(size);
        if (p.before >= 0) {
            const Bytes bytes = converted(itemAt(p.before), f.types[i].type, p.element);
            const std::size_t at = std::size_t(p.beforeAt) * f.types[i].size;
            const bool whole = bytes.size() == size || (bytes.empty() && a.kind == Kind::in);
            if (recording.places.empty() ? !whole : bytes.size() + at > size)
                throw std::runtime_error(name + " has " + std::to_string(size) + " bytes, but is recorded with " +
                                         std::to_string(bytes.size()));
            std::copy(bytes.begin(), bytes.end(), call.arrays[i]->begin() + std::ptrdiff_t(at));
        }
        if (p.after >= 0) {
            RecordedCall::Expected expected;
            expected.bytes = converted(itemAt(p.after), f.types[i].type, p.before < 0 ? p.element : -1);
            expected.first = std::size_t(p.afterAt);
            const std::size_t offset = expected.first * f.types[i].size;
            const bool partly = !recording.places.empty() || (recorded.status > 0 && a.onWarning >= 0);
            if (expected.bytes.size() + offset > size || (!partly && expected.bytes.size() != size))
                throw std::runtime_error(name + " has " + std::to_string(size) + " bytes, but is recorded with " +
                                         std::to_string(expected.bytes.size()));
            if (recorded.status > 0 && a.onWarning >= 0)
                expected.bytes.resize(std::min(expected.bytes.size(), std::size_t(a.onWarning) * f.types[i].size));
            const auto next = std::size_t(p.after) + 1;
            const bool named = std::any_of(places.begin(), places.end(),
                                           [&](const Place& q) { return q.before == int(next) || q.after == int(next); });
            if (isFloat(f.types[i].type) && next < items.size() && !named) {  // a tolerance
                expected.absolute = numberAt(items[next].bytes, items[next].type, 0);
                expected.relative = numberAt(items[next].bytes, items[next].type, 1);
            } else if (isFloat(f.types[i].type) && recording.places.empty()) {
                throw std::runtime_error(name + " is recorded without a tolerance");
            }
            if (recorded.status >= 0 && !(a.keptOnWarning && recorded.status > 0)) recorded.expected[i] = expected;
        }
    }
    for (std::size_t i = 0; i < places.size(); i++) {
        const auto [other, content] = f.arguments[i].onlyWith;
        if (other < 0 || !recorded.expected[i]) continue;
        const auto& decisive = recorded.expected[std::size_t(other)];
        if (decisive && integerAt(decisive->bytes, f.types[std::size_t(other)].type, 0) != content)
            recorded.expected[i] = RecordedCall::Expected{*call.arrays[i]};
    }
    return recorded;
}

RecordedCall withNames(const Function& f, const VectorCase& c) {
    RecordedCall recorded{Call(f), 0, c.status, std::vector<std::optional<RecordedCall::Expected>>(f.arguments.size()),
                          c.label};
    if (c.arguments.size() != f.arguments.size()) throw std::runtime_error("recorded with another number of arguments");
    for (std::size_t i = 0; i < c.arguments.size(); i++) {
        const auto& a = c.arguments[i];
        const char type = f.types[i].type;
        if (f.types[i].pointer != (a.kind != 'v')) throw std::runtime_error(a.name + " is recorded as something else");
        if (a.kind == 'v') {
            const Bytes bytes = converted({a.type, a.input}, type, 0);
            if (isFloat(type))
                recorded.call.cells[i].real = numberAt(bytes, type, 0);
            else
                recorded.call.setInteger(i, integerAt(bytes, type, 0));
            continue;
        }
        if (a.count < 0) continue;
        if (a.type != type) throw std::runtime_error(a.name + " is recorded in another type");
        recorded.call.arrays[i] = a.kind == 'o' ? filler(std::size_t(a.count) * f.types[i].size) : a.input;
        if (c.status >= 0 && (a.kind == 'o' || a.kind == 'b') && !c.advisory)
            recorded.expected[i] = {a.expected, 0, double(a.tolerance), 0};
    }
    // The history may be longer than what the function reads.
    for (std::size_t i = 0; i < c.arguments.size() && c.status >= 0; i++) {
        const auto& a = c.arguments[i];
        if (a.kind == 'v' || a.count < 0) continue;
        const std::size_t history = recorded.call.history(i), elements = recorded.call.elements(i);
        const std::ptrdiff_t more = a.offset - std::ptrdiff_t(history);
        if (more < 0 || std::size_t(a.count) - std::size_t(more) != elements)
            throw std::runtime_error(a.name + " is recorded with another length or history");
        const auto shorten = [&](Bytes& bytes) {
            bytes.erase(bytes.begin(), bytes.begin() + more * std::ptrdiff_t(f.types[i].size));
        };
        shorten(*recorded.call.arrays[i]);
        if (recorded.expected[i]) shorten(recorded.expected[i]->bytes);
    }
    return recorded;
}

}  // namespace

std::vector<RecordedCall> RecordedFile::calls() const {
    std::vector<RecordedCall> calls;
    try {
        if (users[0].first->named) {
            for (const VectorCase& c : readVectorCases(name)) calls.push_back(withNames(*users[0].first, c));
            return calls;
        }
        for (const Items& items : readItemCases(name)) {
            auto user = users.begin();
            if (user->second->kind >= 0) {
                const Item& item = items.at(user->second->startsWithKind ? 0 : 1);
                const int kind = int(integerAt(item.bytes, item.type, 0));
                user = std::find_if(users.begin(), users.end(), [&](const auto& u) { return u.second->kind == kind; });
                if (user == users.end()) throw std::runtime_error("no function has kind " + std::to_string(kind));
            }
            calls.push_back(fromItems(*user->first, *user->second, items));
        }
    } catch (const std::exception& e) {
        throw std::runtime_error(name + ", case " + std::to_string(calls.size()) + ": " + e.what());
    }
    return calls;
}

std::vector<RecordedFile> recordedFiles() {
    std::vector<RecordedFile> files;
    for (const Function& f : Described::all())
        for (const Recording& recording : f.recordings) {
            auto file = std::find_if(files.begin(), files.end(), [&](const RecordedFile& other) {
                return recording.stream && other.name == recording.file;
            });
            if (file == files.end()) file = files.insert(file, RecordedFile{recording.file, {}});
            file->users.emplace_back(&f, &recording);
        }
    return files;
}

std::string differenceOf(const RecordedCall& recorded, const Result& result) {
    const Function& f = *recorded.call.function;
    if (result.status != recorded.status)
        return "the status is " + std::to_string(result.status) + ", expected " + std::to_string(recorded.status);
    for (std::size_t i = 0; i < recorded.expected.size(); i++) {
        if (!recorded.expected[i]) continue;
        const auto& expected = *recorded.expected[i];
        const char type = f.types[i].type;
        const std::size_t width = widthOf(type), n = expected.bytes.size() / width;
        double largest = 0, allowed = 0;
        if (isFloat(type)) {
            for (std::size_t e = 0; e < n; e++) largest = std::max(largest, std::fabs(numberAt(expected.bytes, type, e)));
            allowed = expected.absolute + expected.relative * largest;
        }
        const auto begin = result.arrays[i].begin() + std::ptrdiff_t(expected.first * f.types[i].size);
        const Bytes part(begin, begin + std::ptrdiff_t(n * width));
        if (part == expected.bytes) continue;
        if (type == 's') return "argument " + std::to_string(i) + " differs";
        for (std::size_t e = 0; e < n; e++) {
            const double is = numberAt(part, type, e), wanted = numberAt(expected.bytes, type, e);
            if (!(std::fabs(is - wanted) <= allowed))
                return "argument " + std::to_string(i) + "[" + std::to_string(expected.first + e) + "] is " +
                       std::to_string(is) + ", expected " + std::to_string(wanted);
        }
    }
    return {};
}

}  // namespace vsp::test
