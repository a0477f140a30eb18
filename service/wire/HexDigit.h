#pragma once

// The value of one hexadecimal digit, either case; -1 for any other character. Percent escapes and chunk sizes
// both spell numbers this way.
inline int hexValue(unsigned char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}
