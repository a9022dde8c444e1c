// The comment is what the compiler has to say of that line (checked_faults.py); lines without one must compile.
#include <TqOsBase/format/Checked.h>

#include <string>
#include <string_view>

enum class Scoped { kOne };

void faults(int i, unsigned u, long long big, double d, long double wide, const char* narrow, const wchar_t* text,
            std::string string, std::wstring wstring, std::wstring_view view, void* pointer, Scoped scoped, float* f,
            double* df, int* ip, short* sp, long long* lp, wchar_t* buffer, char* bytes) {
    wchar_t out[64];
    tq::format(out, L"%d %u %f %s %s %p %D|%.3d", i, u, d, text, wstring, pointer, big, -i);
    tq::format(out, L"%d %f", d, i);  // argument<1>::d_needs_32_bits
    tq::format(out, L"%d %f", i, i);  // argument<2>::f_needs_a_double
    tq::format(out, L"%f", wide);     // argument<1>::f_needs_a_double
    tq::format(out, L"%d", big);      // argument<1>::d_needs_32_bits_use_D_for_64
    tq::format(out, L"%ld", 1L);      // argument<1>::d_needs_32_bits_use_D_for_64
    tq::format(out, L"%D", i);        // argument<1>::D_needs_64_bits
    tq::format(out, L"%s", narrow);   // argument<1>::s_needs_wide_text_use_c_str
    tq::format(out, L"%s", string);   // argument<1>::s_needs_wide_text_use_c_str
    tq::format(out, L"%s", view);     // argument<1>::s_needs_wide_text_use_c_str
    tq::format(out, L"%c", text);     // argument<1>::c_needs_a_character
    tq::format(out, L"%p", d);        // argument<1>::p_needs_a_pointer
    tq::format(out, L"%d", scoped);   // argument<1>::d_needs_32_bits
    tq::format(out, L"%d %d", i);     // argument<2>::is_missing_too_few_arguments
    tq::format(out, L"%d", i, d);     // argument<2>::is_not_used_too_many_arguments
    tq::format(out, L"%*d", d, i);    // argument<1>::star_needs_an_int
    tq::format(out, L"%.*f", i, i);   // argument<2>::f_needs_a_double
    tq::format(out, L"%q1", d);       // argument<0>::q_without_a_length_limit
    tq::format(out, L"%.20q", d);     // argument<0>::q_without_a_mode
    tq::format(out, L"%.20q*", d, d); // argument<1>::star_needs_an_int
    tq::format(out, L"%y", i);        // argument<0>::letter_is_unknown
    tq::format(out, L"%lld", big);    // argument<0>::letter_is_unknown
    tq::format(out, L"%#x", u);       // argument<0>::letter_is_unknown
    tq::format(out, L"100%");         // argument<0>::ends_within_a_directive
    tq::format(out, L"100%% %d", i);
    tq::format(out, 64, L"%2$f %1$d", i, d);
    tq::format(out, 64, L"%2$d %1$d", i, d);    // argument<2>::d_needs_32_bits
    tq::format(out, 64, L"%1$d %d", i, d);      // argument<0>::position_is_missing
    tq::format(out, 64, L"%1$*d", i, i);        // argument<0>::position_is_missing
    tq::format(out, 64, L"%2$d", i, i);         // argument<1>::is_not_used_too_many_arguments
    tq::format(out, 64, L"%3$d %1$d", i, i);    // argument<3>::is_missing_too_few_arguments
    static_cast<void>(tq::formatted(L"%f", i)); // argument<1>::f_needs_a_double
    tq::scan(text, L"%d %hd %ld %lf %f %31s %c %*s %n%%", ip, sp, lp, df, f, buffer, buffer, ip);
    tq::scan(text, L"%d", sp);        // argument<1>::d_needs_a_pointer_to_32_bits
    tq::scan(text, L"%hd", ip);       // argument<1>::h_d_needs_a_pointer_to_16_bits
    tq::scan(text, L"%D", ip);        // argument<1>::l_d_needs_a_pointer_to_64_bits
    tq::scan(text, L"%d %f", ip, df); // argument<2>::f_needs_a_pointer_to_float
    tq::scan(text, L"%lf", f);        // argument<1>::l_f_needs_a_pointer_to_double
    tq::scan(text, L"%d", i);         // argument<1>::d_needs_a_pointer_to_32_bits
    tq::scan(text, L"%9s", bytes);    // argument<1>::s_needs_a_wide_buffer
    tq::scan(text, L"%s", buffer);    // argument<1>::s_without_a_width
    tq::scan(text, L"%64s", out);     // argument<1>::buffer_is_shorter_than_the_width
    tq::scan(text, L"%64c", out);
    tq::scan(text, L"%d %d", ip); // argument<2>::is_missing_too_few_arguments
    tq::scan(text, L"%*d", ip);   // argument<1>::is_not_used_too_many_arguments
    tq::scan(text, L"%q", ip);    // argument<0>::letter_is_unknown
}
