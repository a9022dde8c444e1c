#include "format/ArgumentSource.h"

#include <TqOsBase/memory/Allocation.h>

#include <algorithm>
#include <cassert>
#include <climits>
#include <cwchar>

namespace tq::detail {

namespace {

constexpr FormatParameters kNoParameter{kParameterUnused, {}};

std::int64_t integerOf(const FormatParameters& parameter) {
    switch (parameter.type) {
    case kParameterInt:
    case kParameterCharacter:
        return parameter.value.asInt;
    case kParameterUnsigned:
        return parameter.value.asUnsigned;
    case kParameterInt64:
        return parameter.value.asInt64;
    default:
        return 0;
    }
}

class ParameterTypes {
public:
    ParameterTypes(FormatParameters* params, int count) : m_params(params), m_count(count) {}

    void set(int number, std::int32_t type) {
        if (type != kParameterUnused && number >= 1 && number <= m_count)
            m_params[number - 1].type = type;
    }
    void set(const CountField& field) {
        if (field.isArgument)
            set(field.value, kParameterInt);
    }

private:
    FormatParameters* m_params;
    int m_count;
};

void fetch(FormatParameters& parameter, detail::ArgumentCursor& cursor) {
    switch (parameter.type) {
    case kParameterInt:
    case kParameterCharacter:
        parameter.value.asInt = cursor.nextInt();
        break;
    case kParameterUnsigned:
        parameter.value.asUnsigned = cursor.nextUnsigned();
        break;
    case kParameterInt64:
        parameter.value.asInt64 = cursor.nextInt64();
        break;
    case kParameterDouble:
        parameter.value.asDouble = cursor.nextDouble();
        break;
    case kParameterString:
        parameter.value.asString = cursor.nextString();
        break;
    default:
        break;
    }
}

} // namespace

void ParameterArray::release() {
    tqFree(m_data);
}

bool ParameterArray::allocate(int count) {
    assert(count > 0 && m_data == nullptr);
    m_data = static_cast<FormatParameters*>(tqMalloc(static_cast<std::size_t>(count) * sizeof(FormatParameters)));
    m_count = m_data != nullptr ? count : 0;
    return m_data != nullptr;
}

const FormatParameters& ParameterArray::at(int number) const {
    return number >= 1 && number <= m_count ? m_data[number - 1] : kNoParameter;
}

bool ArgumentSource::collectPositions(const wchar_t* format, va_list args) {
    const FormatPositions positions = positionsIn(format);
    m_positional = positions.any;
    if (!positions.any || positions.count == 0)
        return true;
    return m_parameters.allocate(positions.count) &&
           FormatUtil::valist2FormatParameters(args, m_parameters.data(), format, positions.count);
}

std::int64_t ArgumentSource::collectedInteger(int number) const {
    return integerOf(m_parameters.at(number));
}

double ArgumentSource::collectedDouble(int number) const {
    const FormatParameters& parameter = m_parameters.at(number);
    return parameter.type == kParameterDouble ? parameter.value.asDouble : 0.0;
}

const wchar_t* ArgumentSource::collectedString(int number) const {
    const FormatParameters& parameter = m_parameters.at(number);
    return parameter.type == kParameterString ? parameter.value.asString : nullptr;
}

} // namespace tq::detail

bool FormatUtil::isDefineSelfParaIndex(int* count, const wchar_t* format) {
    const tq::detail::FormatPositions positions = tq::detail::positionsIn(format != nullptr ? format : L"");
    if (count != nullptr)
        *count = positions.count;
    return positions.any;
}

bool FormatUtil::valist2FormatParameters(va_list args, FormatParameters* params, const wchar_t* format, int count) {
    using namespace tq::detail;
    if (params == nullptr || format == nullptr || count < 1)
        return true;
    std::fill_n(params, count, FormatParameters{kParameterUnused, {}});
    ParameterTypes types(params, count);
    for (const wchar_t* p = std::wcschr(format, L'%'); p != nullptr; p = std::wcschr(p, L'%')) {
        ++p;
        const Directive directive = parseDirective(p, true);
        if (directive.letter == L'\0')
            break;
        types.set(directive.width);
        types.set(directive.precision);
        if (isUnitLetter(directive.letter)) {
            const QModeField mode = readQMode(p, true);
            if (mode.kind == QModeField::kArgument)
                types.set(mode.value, kParameterInt);
            if (mode.kind == QModeField::kNone)
                continue;
        }
        types.set(directive.position, directive.kind->parameter);
    }
    tq::detail::ArgumentCursor cursor(args);
    std::for_each(params, params + count, [&cursor](FormatParameters& parameter) { fetch(parameter, cursor); });
    return true;
}
