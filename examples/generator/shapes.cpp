// Generated from shapes.tl.
#include <cmath>
#include <cstdio>

namespace
{

struct Circle
{
    static constexpr unsigned flag = 1;
    double radius;
    double Area() const { return 3.141592653589793 * radius * radius; }
};

struct Square
{
    static constexpr unsigned flag = 2;
    double side;
    double Area() const { return side * side; }
};

struct Triangle
{
    static constexpr unsigned flag = 4;
    double side;
    double Area() const { return 0.4330127018922193 * side * side; }
};

void Print(const char* title, unsigned flag, double area)
{
    std::printf("%-8s flag %u, area %.3f\n", title, flag, area);
}

bool Check(double area, double expected)
{
    return std::fabs(area - expected) < 1e-9;
}

} // namespace

int main()
{
    bool good = true;
    std::printf("%s: %d kinds, two of each are %d\n", "shapes", 3, 6);
    Print("Circle", Circle::flag, Circle{2}.Area());
    good = Check(Circle{2}.Area(), 12.566370614359172) && good;
    Print("Square", Square::flag, Square{3}.Area());
    good = Check(Square{3}.Area(), 9) && good;
    Print("Triangle", Triangle::flag, Triangle{4}.Area());
    good = Check(Triangle{4}.Area(), 6.928203230275509) && good;
    std::printf(good ? "all areas are right\n" : "an area is wrong\n");
    return good ? 0 : 1;
}
