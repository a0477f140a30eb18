#include "place/Place.h"

int main(int argc, char **argv)
{
    return Place::run(std::vector<std::string>(argv + 1, argv + argc));
}
