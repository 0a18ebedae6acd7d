// Measures writing and reading an object with a vector of doubles, 100 short strings and a few numbers,
// against cereal, Boost.Serialization and copying of the bytes only. Also measures a vector of doubles alone,
// and computing the size of an object against writing it.
//
// Each contestant creates a new image in memory, and reads into an object that has been read before, like a
// program that processes one record after the other. The program first compares the objects read with those
// written.
//
//     bench_serial [--benchmark_... options]

#include "bss/serial/WBinarySerializer.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"

#include <benchmark/benchmark.h>
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/vector.hpp>
#include <cereal/archives/binary.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>

#include <cstdio>
#include <cstring>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace {

// The object that all contestants store.
struct Record {
    std::int32_t number = 0;
    bool flag = false;
    double angle = 0.0;
    std::vector<double> values;
    std::vector<std::string> names;

    template <class Archive>
    void serialize(Archive& archive) {
        archive(number, flag, angle, values, names);
    }
    bool operator==(const Record&) const = default;
};

} // namespace

namespace boost::serialization {

template <class Archive>
void serialize(Archive& archive, Record& record, unsigned /*version*/) {
    archive& record.number& record.flag& record.angle& record.values& record.names;
}

} // namespace boost::serialization

namespace {

Record MakeRecord(std::size_t count, std::size_t names) {
    Record record;
    record.number = 42;
    record.flag = true;
    record.angle = 90.0;
    for (std::size_t i = 0; i < count; ++i) {
        record.values.push_back(static_cast<double>(i) / 7.0);
    }
    for (std::size_t i = 0; i < names; ++i) {
        record.names.push_back("channel " + std::to_string(i));
    }
    return record;
}

class Persistent : public bss::WPersistentObject {
public:
    explicit Persistent(Record record = {})
        : WPersistentObject(1, 2, bss::WVersion(5, 4, 0, 0)), m_record(std::move(record)) {}
    const Record& Content() const { return m_record; }

    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        auto& serializer = static_cast<bss::WBinarySerializer&>(*m_pSerializer);
        static const std::wstring labels[] = {L"number", L"flag", L"angle", L"values", L"names"};
        const auto member = [&](const std::wstring& label, auto& value) {
            bRead ? serializer.Retrieve(label, value) : serializer.Insert(label, value);
        };
        member(labels[0], m_record.number);
        member(labels[1], m_record.flag);
        member(labels[2], m_record.angle);
        member(labels[3], m_record.values);
        member(labels[4], m_record.names);
    }

private:
    Record m_record;
};

std::string WriteOurs(Persistent& object) {
    bss::WBinarySerializer writer(false, false);
    object.Write(&writer, 0, true);
    return writer.GetBuffer();
}
void ReadOurs(const std::string& image, Persistent& object) {
    bss::WBinarySerializer reader(image, false);
    object.Read(&reader, 0, true);
}
unsigned int SizeOurs(Persistent& object) {
    bss::WBinarySerializer sizing(true, false);
    object.Write(&sizing, 0, true);
    return sizing.GetBufferSize();
}

std::string WriteCereal(const Record& record) {
    std::ostringstream stream(std::ios::binary);
    cereal::BinaryOutputArchive archive(stream);
    archive(record);
    return stream.str();
}
void ReadCereal(const std::string& image, Record& record) {
    std::istringstream stream(image, std::ios::binary);
    cereal::BinaryInputArchive archive(stream);
    archive(record);
}

std::string WriteBoost(const Record& record) {
    std::ostringstream stream(std::ios::binary);
    boost::archive::binary_oarchive archive(stream, boost::archive::no_header);
    archive << record;
    return stream.str();
}
void ReadBoost(const std::string& image, Record& record) {
    std::istringstream stream(image, std::ios::binary);
    boost::archive::binary_iarchive archive(stream, boost::archive::no_header);
    archive >> record;
}

// Copies the bytes without any counts, so the image can be read only with known sizes.
std::string WriteMemcpy(const Record& record) {
    std::size_t size =
        sizeof(record.number) + sizeof(record.flag) + sizeof(record.angle) + 8 * record.values.size();
    for (const std::string& name : record.names) {
        size += name.size();
    }
    std::string image;
    image.reserve(size);
    const auto put = [&image](const void* data, std::size_t bytes) {
        image.append(static_cast<const char*>(data), bytes);
    };
    put(&record.number, sizeof(record.number));
    put(&record.flag, sizeof(record.flag));
    put(&record.angle, sizeof(record.angle));
    put(record.values.data(), 8 * record.values.size());
    for (const std::string& name : record.names) {
        put(name.data(), name.size());
    }
    return image;
}
void ReadMemcpy(const std::string& image, Record& record) {
    const char* position = image.data();
    const auto take = [&position](void* data, std::size_t bytes) {
        std::memcpy(data, position, bytes);
        position += bytes;
    };
    take(&record.number, sizeof(record.number));
    take(&record.flag, sizeof(record.flag));
    take(&record.angle, sizeof(record.angle));
    take(record.values.data(), 8 * record.values.size());
    for (std::string& name : record.names) {
        take(name.data(), name.size());
    }
}

void Register(const std::string& name, std::function<void()> run) {
    benchmark::RegisterBenchmark(name.c_str(), [run = std::move(run)](benchmark::State& state) {
        for (auto step : state) {
            static_cast<void>(step);
            run();
            benchmark::ClobberMemory();
        }
    })->Repetitions(9);
}

// Registers the vector alone, written and read by one call without an object.
void RegisterVector(const std::vector<double>& values, const std::string& what) {
    Register("serial/write " + what + "/krtbss", [=] {
        bss::WBinarySerializer writer(false, false);
        writer.Insert(L"", values);
        benchmark::DoNotOptimize(writer.GetBufferSize());
    });
    Register("serial/write " + what + "/memcpy", [=] {
        std::string image;
        image.append(reinterpret_cast<const char*>(values.data()), 8 * values.size());
        benchmark::DoNotOptimize(image.data());
    });
    const std::size_t repeats = 2'000'000 / values.size();
    bss::WBinarySerializer writer(false, false);
    for (std::size_t i = 0; i < repeats; ++i) {
        writer.Insert(L"", values);
    }
    const std::string image = writer.GetBuffer();
    benchmark::RegisterBenchmark(("serial/read " + what + "/krtbss").c_str(), [=](benchmark::State& state) {
        std::vector<double> read(values.size());
        while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(repeats))) {
            state.PauseTiming();
            bss::WBinarySerializer reader(image, false);
            state.ResumeTiming();
            for (std::size_t i = 0; i < repeats; ++i) {
                reader.Retrieve(L"", read);
                benchmark::DoNotOptimize(read.data());
            }
        }
    })->Repetitions(9);
    benchmark::RegisterBenchmark(("serial/read " + what + "/memcpy").c_str(), [=](benchmark::State& state) {
        std::vector<double> read(values.size());
        while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(repeats))) {
            state.PauseTiming();
            const std::string copy(image);
            const char* position = copy.data();
            state.ResumeTiming();
            for (std::size_t i = 0; i < repeats; ++i) {
                std::memcpy(read.data(), position + 8, 8 * read.size());
                position += 8 + 8 * read.size();
                benchmark::DoNotOptimize(read.data());
            }
        }
    })->Repetitions(9);
}

bool RegisterAll(std::size_t count) {
    const Record record = MakeRecord(count, 100);
    Persistent object(record);
    const std::string ours = WriteOurs(object);
    const std::string cereals = WriteCereal(record);
    const std::string boosts = WriteBoost(record);
    const std::string bytes = WriteMemcpy(record);
    Persistent readOurs;
    Record readCereal;
    Record readBoost;
    Record readMemcpy = record;
    std::fill(readMemcpy.values.begin(), readMemcpy.values.end(), 0.0);
    ReadOurs(ours, readOurs);
    ReadCereal(cereals, readCereal);
    ReadBoost(boosts, readBoost);
    ReadMemcpy(bytes, readMemcpy);
    if (readOurs.Content() != record || readCereal != record || readBoost != record || readMemcpy != record ||
        SizeOurs(object) != ours.size()) {
        std::fprintf(stderr, "bench_serial: what was read is not what was written\n");
        return false;
    }
    const std::string what = "object with " + std::to_string(count) + " doubles";
    const std::string write = "serial/write " + what + "/";
    Register(write + "krtbss", [=]() mutable { benchmark::DoNotOptimize(WriteOurs(object)); });
    Register(write + "cereal", [=] { benchmark::DoNotOptimize(WriteCereal(record)); });
    Register(write + "Boost.Serialization", [=] { benchmark::DoNotOptimize(WriteBoost(record)); });
    Register(write + "memcpy", [=] { benchmark::DoNotOptimize(WriteMemcpy(record)); });
    const std::string read = "serial/read " + what + "/";
    Register(read + "krtbss", [=]() mutable { ReadOurs(ours, readOurs); });
    Register(read + "cereal", [=]() mutable { ReadCereal(cereals, readCereal); });
    Register(read + "Boost.Serialization", [=]() mutable { ReadBoost(boosts, readBoost); });
    Register(read + "memcpy", [=]() mutable { ReadMemcpy(bytes, readMemcpy); });
    const std::string size = "serial/measure " + what + "/";
    Register(size + "krtbss", [=]() mutable { benchmark::DoNotOptimize(SizeOurs(object)); });
    Register(size + "writing it", [=]() mutable { benchmark::DoNotOptimize(WriteOurs(object)); });
    RegisterVector(record.values, std::to_string(count) + " doubles");
    return true;
}

} // namespace

int main(int argc, char** argv) {
    for (const std::size_t count : {1'000U, 100'000U}) {
        if (!RegisterAll(count)) {
            return 1;
        }
    }
    std::string minimum = "--benchmark_min_time=0.05";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, minimum.data());
    auto count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
