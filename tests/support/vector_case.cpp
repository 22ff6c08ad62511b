#include "support/vector_case.h"

#include <stdexcept>

#include "support/test_data.h"

namespace vsp::test {

namespace {

class Reader {
  public:
    explicit Reader(const std::string& file) : name_(file), bytes_(testData(file)) {
        if (text(4) != "VEC1") throw std::runtime_error(file + ": not a vector file");
    }

    template <class T>
    T value() {
        T x;
        read(&x, sizeof x);
        return x;
    }

    std::string text(std::size_t size) {
        std::string s(size, '\0');
        read(s.data(), size);
        return s.substr(0, s.find('\0'));
    }

    // Padded to a multiple of four bytes.
    std::vector<std::byte> block(std::size_t size) {
        std::vector<std::byte> bytes(size);
        read(bytes.data(), size);
        text((4 - size % 4) % 4);
        return bytes;
    }

    void expectEnd() {
        if (position_ != bytes_.size()) throw std::runtime_error(name_ + ": data after the end");
    }

  private:
    void read(void* to, std::size_t size) {
        if (bytes_.size() - position_ < size) throw std::runtime_error(name_ + ": truncated");
        if (size > 0) std::memcpy(to, bytes_.data() + position_, size);
        position_ += size;
    }

    std::string name_, bytes_;
    std::size_t position_ = 0;
};

std::size_t sizeOf(char type) { return type == 'B' ? 1 : type == 'h' ? 2 : type == 'd' ? 8 : 4; }

}  // namespace

std::vector<VectorCase> readVectorCases(const std::string& file) {
    Reader reader(file);
    std::vector<VectorCase> cases(reader.value<Vsp32u>());
    std::vector<RecordedArgument> arguments(reader.value<Vsp32u>());
    for (RecordedArgument& a : arguments) {
        a.name = reader.text(16);
        a.type = reader.value<char>();
        a.kind = reader.value<char>();
        reader.text(2);
    }
    for (VectorCase& c : cases) {
        c.status = reader.value<Vsp32s>();
        c.advisory = (reader.value<Vsp32u>() & 1) != 0;
        c.label = reader.text(24);
        c.arguments = arguments;
        for (RecordedArgument& a : c.arguments) {
            a.count = reader.value<Vsp32s>();
            a.offset = reader.value<Vsp32s>();
            a.tolerance = reader.value<Vsp32f>();
            if (a.count <= 0) continue;
            const std::size_t size = std::size_t(a.count) * sizeOf(a.type);
            if (a.kind != 'o') a.input = reader.block(size);
            if ((a.kind == 'o' || a.kind == 'b') && c.status >= 0) a.expected = reader.block(size);
        }
    }
    reader.expectEnd();
    return cases;
}

std::vector<std::vector<Item>> readItemCases(const std::string& file) {
    Reader reader(file);
    std::vector<std::vector<Item>> cases(reader.value<Vsp32u>());
    for (auto& items : cases) {
        items.resize(reader.value<Vsp32u>());
        for (Item& item : items) {
            const char type = reader.text(4)[0];
            item.type = type == 'H' ? 'h' : type == 'I' ? 'u' : type;  // as the types of arguments are called
            const std::size_t count = reader.value<Vsp32u>();
            item.bytes = reader.block(count * sizeOf(item.type));
        }
    }
    reader.expectEnd();
    return cases;
}

}  // namespace vsp::test
