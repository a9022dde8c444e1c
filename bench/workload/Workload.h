#pragma once

#include "bench/workload/Drawing.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace workload {

/// What is done with the drawing, in this order.
inline constexpr std::array kPhases = {
    "open", "walk texts",  "texts to wide",   "format dimensions", "look up names", "edit",
    "save", "UTF-8 index", "numbers to text", "text to numbers",   "close",
};

/// What a run found out. Processor time in nanoseconds, memory in bytes.
struct Outcome {
    std::array<double, kPhases.size()> times{};
    std::uint64_t checksum = 0;
    double open = 0;   ///< Memory while the drawing is open.
    double closed = 0; ///< Memory after it was closed.
};

inline double processorTime() {
    ::timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

/// One drawing and the work on it, with the tools of one contender. These are types and static functions:
///   Text, Wide           a narrow and a wide text, with c_str() and size()
///   allocate, release    memory for entities and what they hold
///   Reader, Writer       a file, read and written a few bytes at a time
///   Names                a table from wide names, given as terminated text, to numbers
///   readText             a text from the reader, of so many bytes
///   sumOfCharacters      of a narrow text, escapes counted as the character that they name
///   toWide               the wide text of a narrow one
///   formatDimension      a dimension into room for kLabel characters; returns how many it has
///   Index                UTF-8 texts one after the other, each terminated; add(), data(), size()
///   numberToText         16 digits as %.16g writes them; returns after the last character
///   textToNumber         the number of a text that anything may follow; moves the pointer after it
template <class Tools>
class Workload {
public:
    Workload(std::string from, std::string to) : m_from(std::move(from)), m_to(std::move(to)) {}

    template <class Resident>
    Outcome run(Resident resident) {
        const double before = resident();
        time(&Workload::open);
        time(&Workload::walk);
        time(&Workload::widen);
        fold(m_widths);
        for (const Entity* entity : m_entities)
            fold(entity->wide.c_str(), entity->wide.size() * sizeof(wchar_t));
        m_labels.resize(m_entities.size() / 4 * kLabel);
        time(&Workload::format);
        fold(m_labels.data(), m_labelsEnd * sizeof(wchar_t));
        time(&Workload::lookUp);
        time(&Workload::edit);
        m_outcome.open = resident() - before;
        time(&Workload::save);
        foldFile();
        time(&Workload::index);
        fold(m_index.data(), m_index.size());
        m_index = typename Tools::Index();
        m_numbers.resize(m_entities.size() * kNumbersEach * kNumber);
        time(&Workload::writeNumbers);
        fold(m_numbers.data(), m_numbersEnd);
        time(&Workload::readNumbers);
        m_labels = std::vector<wchar_t>();
        m_numbers = std::vector<char>();
        time(&Workload::close);
        m_outcome.closed = resident() - before;
        m_outcome.checksum = m_hash;
        return m_outcome;
    }

private:
    using Text = typename Tools::Text;
    using Wide = typename Tools::Wide;

    static constexpr std::size_t kLabel = 160;
    static constexpr std::size_t kNumber = 26;
    static constexpr std::size_t kNumbersEach = 4;

    struct Entity {
        std::uint64_t handle = 0;
        double* coordinates = nullptr;
        char* extra = nullptr;
        std::uint16_t layer = 0;
        std::uint16_t coordinateCount = 0;
        std::uint16_t extraCount = 0;
        Text text;
        Wide wide;
    };

    void time(void (Workload::*phase)()) {
        const double start = processorTime();
        (this->*phase)();
        m_outcome.times[m_phase++] = processorTime() - start;
    }

    void fold(const void* bytes, std::size_t count) { m_hash = hashOf(bytes, count, m_hash); }
    void fold(std::uint64_t number) { fold(&number, sizeof number); }

    void foldFile() {
        std::FILE* const file = std::fopen(m_to.c_str(), "rb");
        std::array<char, 65536> bytes;
        while (const std::size_t count = file == nullptr ? 0 : std::fread(bytes.data(), 1, bytes.size(), file))
            fold(bytes.data(), count);
        if (file != nullptr)
            std::fclose(file);
    }

    template <class Number>
    static Number get(typename Tools::Reader& reader) {
        Number number;
        reader.read(&number, sizeof number);
        return number;
    }

    template <class T>
    static T* allocate(std::size_t count) {
        return static_cast<T*>(Tools::allocate(count * sizeof(T)));
    }

    static Entity* newEntity() { return new (Tools::allocate(sizeof(Entity))) Entity; }
    static void deleteEntity(Entity* entity) {
        Tools::release(entity->coordinates);
        Tools::release(entity->extra);
        entity->~Entity();
        Tools::release(entity);
    }

    void open() {
        typename Tools::Reader reader(m_from);
        m_layers.resize(get<std::uint32_t>(reader));
        m_names.reserve(m_layers.size());
        for (std::size_t i = 0; i < m_layers.size(); ++i) {
            Text name;
            Tools::readText(reader, get<std::uint16_t>(reader), name);
            Tools::toWide(name, m_layers[i]);
            m_names.insert(m_layers[i].c_str(), i);
        }
        m_entities.resize(get<std::uint32_t>(reader));
        for (Entity*& entity : m_entities) {
            entity = newEntity();
            entity->layer = get<std::uint16_t>(reader);
            entity->handle = get<std::uint64_t>(reader);
            Tools::readText(reader, get<std::uint16_t>(reader), entity->text);
            entity->coordinateCount = get<std::uint16_t>(reader);
            entity->coordinates = allocate<double>(entity->coordinateCount);
            for (unsigned i = 0; i < entity->coordinateCount; ++i)
                entity->coordinates[i] = get<double>(reader);
            entity->extraCount = get<std::uint16_t>(reader);
            entity->extra = allocate<char>(entity->extraCount);
            reader.read(entity->extra, entity->extraCount);
        }
    }

    void walk() {
        std::uint64_t sum = 0;
        for (const Entity* entity : m_entities)
            sum += Tools::sumOfCharacters(entity->text);
        fold(sum);
    }

    void widen() {
        m_widths = 0;
        for (Entity* entity : m_entities) {
            Tools::toWide(entity->text, entity->wide);
            m_widths += entity->wide.size();
        }
    }

    // Every fourth entity is a dimension.
    void format() {
        Choice choice(3);
        wchar_t* out = m_labels.data();
        for (std::size_t i = 3; i < m_entities.size(); i += 4) {
            const Entity& entity = *m_entities[i];
            const double length = choice.length();
            out += Tools::formatDimension(out, kLabel, m_layers[entity.layer].c_str(), entity.coordinates[0],
                                          entity.coordinates[1], static_cast<int>(i), length, choice.angle());
        }
        m_labelsEnd = static_cast<std::size_t>(out - m_labels.data());
    }

    // Three for each entity, one of which is not there.
    void lookUp() {
        std::uint64_t sum = 0;
        for (const Entity* entity : m_entities) {
            sum += m_names.find(m_layers[entity->layer].c_str());
            sum += m_names.find(m_layers[entity->handle % m_layers.size()].c_str());
            sum += m_names.find(entity->wide.c_str());
        }
        fold(sum);
    }

    void edit() {
        Choice choice(5);
        std::vector<Text> texts(1000);
        for (Text& text : texts)
            Tools::setText(text, choice.text());
        for (std::size_t i = 0; i < m_entities.size(); ++i) {
            Entity*& entity = m_entities[choice.between(0, static_cast<unsigned>(m_entities.size() - 1))];
            const unsigned kind = choice.between(0, 9);
            if (kind < 5) {
                entity->text = texts[i % texts.size()];
                Tools::toWide(entity->text, entity->wide);
            } else if (kind < 8) {
                Tools::release(entity->coordinates);
                entity->coordinateCount = static_cast<std::uint16_t>(choice.between(4, 24));
                entity->coordinates = allocate<double>(entity->coordinateCount);
                for (unsigned k = 0; k < entity->coordinateCount; ++k)
                    entity->coordinates[k] = static_cast<double>(i) + k / 8.0;
            } else {
                Entity* const copy = newEntity();
                *copy = *entity;
                copy->coordinates = allocate<double>(entity->coordinateCount);
                std::copy_n(entity->coordinates, entity->coordinateCount, copy->coordinates);
                copy->extra = allocate<char>(entity->extraCount);
                std::copy_n(entity->extra, entity->extraCount, copy->extra);
                deleteEntity(entity);
                entity = copy;
            }
        }
    }

    void save() {
        typename Tools::Writer writer(m_to);
        const auto put = [&](auto number) { writer.write(&number, sizeof number); };
        put(static_cast<std::uint32_t>(m_entities.size()));
        for (const Entity* entity : m_entities) {
            put(entity->layer);
            put(entity->handle);
            put(static_cast<std::uint16_t>(entity->text.size()));
            writer.write(entity->text.c_str(), entity->text.size());
            put(entity->coordinateCount);
            for (unsigned i = 0; i < entity->coordinateCount; ++i)
                put(entity->coordinates[i]);
            put(entity->extraCount);
            writer.write(entity->extra, entity->extraCount);
        }
        writer.close();
    }

    void index() {
        for (const Entity* entity : m_entities)
            m_index.add(entity->wide);
    }

    void writeNumbers() {
        char* out = m_numbers.data();
        for (const Entity* entity : m_entities)
            for (std::size_t i = 0; i < kNumbersEach && i < entity->coordinateCount; ++i) {
                out = Tools::numberToText(out, entity->coordinates[i]);
                *out++ = '\n';
            }
        m_numbersEnd = static_cast<std::size_t>(out - m_numbers.data());
    }

    void readNumbers() {
        std::uint64_t sum = 0;
        const char* const end = m_numbers.data() + m_numbersEnd;
        for (const char* at = m_numbers.data(); at < end; ++at) {
            const double number = Tools::textToNumber(at, end);
            std::uint64_t bits = 0;
            static_assert(sizeof bits == sizeof number);
            std::memcpy(&bits, &number, sizeof bits);
            sum += bits;
        }
        fold(sum);
    }

    void close() {
        for (Entity* entity : m_entities)
            deleteEntity(entity);
        m_entities = std::vector<Entity*>();
        m_layers = std::vector<Wide>();
        m_names.clear();
    }

    std::string m_from;
    std::string m_to;
    std::vector<Entity*> m_entities;
    std::vector<Wide> m_layers;
    typename Tools::Names m_names;
    typename Tools::Index m_index;
    std::vector<wchar_t> m_labels;
    std::vector<char> m_numbers;
    std::size_t m_labelsEnd = 0;
    std::size_t m_numbersEnd = 0;
    std::uint64_t m_widths = 0;
    std::uint64_t m_hash = 14695981039346656037U;
    std::size_t m_phase = 0;
    Outcome m_outcome;
};

} // namespace workload
