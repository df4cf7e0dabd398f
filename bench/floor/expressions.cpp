// SPDX-License-Identifier: MIT
// Calculates in each round what the input's expressions say.
#include "Floor.h"
#include <cmath>
#include <string>

using namespace floors;

namespace
{

/// Writes values with a blank between them.
class Row
{
public:
    explicit Row(Output& output) : m_output(output) {}
    ~Row() { m_output.Put('\n'); }

    Row& operator<<(int value)
    {
        Separate();
        m_output.PutNumber(value);
        return *this;
    }
    Row& operator<<(double value)
    {
        Separate();
        m_output.PutNumber(value);
        return *this;
    }
    Row& operator<<(bool value) { return *this << std::string_view(value ? "true" : "false"); }
    Row& operator<<(char value) { return *this << std::string_view(&value, 1); }
    Row& operator<<(std::string_view value)
    {
        Separate();
        m_output.Put(value);
        return *this;
    }

private:
    void Separate()
    {
        if (!m_isFirst)
            m_output.Put(' ');
        m_isFirst = false;
    }

    Output& m_output;
    bool m_isFirst = true;
};

int Power(int base, int exponent)
{
    int result = 1;
    for (; exponent > 0; --exponent)
        result *= base;
    return result;
}

void PutIntegers(Row& row, int i)
{
    row << i + 3 << i - 70000 << i * 7 << i / 3 << i % 11 << -i << +i << ~i << !(i == 4)
        << Power(2, i % 10) << i * 4 << (i >> 1) << (i & 12) << (i ^ 5) << (i | 3);
}

void PutConditions(Row& row, int i)
{
    row << (i < 100) << (i <= 100) << (i > 100) << (i >= 100) << (i == 100) << (i != 100)
        << (i % 2 == 0 && i % 3 == 0) << (i % 2 == 0 || i % 3 == 0) << (i % 5 > 2 ? i * 2 : i);
}

void PutOthers(Row& row, int i)
{
    const double x = i / 4.0 + 0.125;
    const std::string s = "item" + std::to_string(i);
    row << x * 2.5 << x / 8 + 0.0625 << (i + 2) * (i - 2) % 0xff << s + "-b"
        << static_cast<int>(s.size()) << s[static_cast<size_t>(i % 4)] << ("abc" < s)
        << std::string_view("a\\b\"") << (i % 2 != 0) << static_cast<int>(x)
        << double(i) / 4 + 0.125 << static_cast<char>('A' + i % 26) << std::to_string(i) + "th"
        << true
        << static_cast<int>(std::sin(i) * 1000) + static_cast<int>(std::cos(i) * 1000) +
               static_cast<int>(std::tan(0.5) * 100)
        << static_cast<int>(std::exp(i % 5) * 10) + static_cast<int>(std::log(i + 1) * 100);
}

} // namespace

int main(int argc, char** argv)
{
    const Arguments arguments(argc, argv);
    const int count = NumberBehind(MapFile(arguments.m_input), "@while(i < ");
    Output output(arguments.m_output);
    for (int i = 0; i < count; ++i)
    {
        Row row(output);
        PutIntegers(row, i);
        PutConditions(row, i);
        PutOthers(row, i);
    }
}
