#include "support/described.h"

#include <algorithm>
#include <stdexcept>

namespace vsp::test {

namespace {

std::vector<Function>& everyFunction() {
    static std::vector<Function> all;
    return all;
}

}  // namespace

Described::Described(const std::string& family, std::vector<Function> functions) {
    for (Function& f : functions) {
        f.family = family;
        if (f.recordings.empty() && !f.withoutRecordings) f.recordings.push_back({f.name, false, -1, {}, -1, {}});
        for (Recording& recording : f.recordings) recording.file = family + "/" + recording.file + ".vec";
        auto& all = everyFunction();
        const auto place = std::lower_bound(all.begin(), all.end(), f.name,
                                            [](const Function& g, const std::string& name) { return g.name < name; });
        if (place != all.end() && place->name == f.name) throw std::logic_error(f.name + " is described twice");
        all.insert(place, std::move(f));
    }
}

const std::vector<Function>& Described::all() { return everyFunction(); }

Function Function::checks(std::initializer_list<VspStatus> inOrder) const {
    Function f = *this;
    f.order = inOrder;
    return f;
}

Function Function::recorded(const std::string& file, std::vector<Place> places, int statusItem) const {
    Function f = *this;
    f.recordings.push_back({file, false, -1, std::move(places), statusItem, {}});
    return f;
}

Function Function::stream(const std::string& file, int kind, std::vector<Place> places, int statusItem,
                          Initialiser initialise) const {
    Function f = *this;
    f.recordings.push_back({file, true, kind, std::move(places), statusItem, std::move(initialise)});
    return f;
}

Function Function::operation(const std::string& file, int number) const {
    Function f = stream(file, number);
    f.recordings.back().startsWithKind = true;
    return f;
}

Function Function::notRecorded() const {
    Function f = *this;
    f.withoutRecordings = true;
    return f;
}

Function Function::recordedWithNames() const {
    Function f = *this;
    f.named = true;
    return f;
}

Function describing::make(const char* name, std::size_t slot, std::vector<ParameterType> types,
                          std::vector<Argument> arguments, VspStatus (*invoke)(Function::Any, const Cell*)) {
    const auto expect = [name](bool good, const std::string& problem) {
        if (!good) throw std::logic_error(std::string(name) + ": " + problem);
    };
    expect(types.size() == arguments.size(), "it has " + std::to_string(types.size()) + " arguments");
    const auto isLength = [](const Argument& a) { return a.kind == Argument::Kind::value && a.error == vspStsSizeErr; };
    const int firstLength = int(std::find_if(arguments.begin(), arguments.end(), isLength) - arguments.begin());
    for (std::size_t i = 0; i < arguments.size(); i++) {
        Argument& a = arguments[i];
        const std::string number = "argument " + std::to_string(i);
        expect(types[i].pointer == a.pointer(), number + (types[i].pointer ? " is a pointer" : " is no pointer"));
        expect(!types[i].constant || !a.written(), number + " is constant");
        a.elements.setFirstLength(firstLength);
        a.history.setFirstLength(firstLength);
        a.rows.setFirstLength(firstLength);
    }
    return {.name = name,
            .family = {},
            .types = std::move(types),
            .arguments = std::move(arguments),
            .slot = slot,
            .invoke = invoke,
            .recordings = {}};
}

}  // namespace vsp::test
