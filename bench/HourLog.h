#pragma once

#include <cstdio>
#include <string>

// Writes an hour of 24 channels logged every 10 ms (360,000 rows) as the program logs it, once
// per run, and gives its path.
inline std::string writeHourLog()
{
    const std::string file = "/tmp/corvalog-bench-hour.csv";
    std::string text = "Date,Time,Elapsed mS";
    for (int n = 1; n <= 24; ++n)
        text += ",Channel " + std::to_string(n);
    text += "\r\n";
    char row[512];
    for (int tick = 1; tick <= 360000; ++tick) {
        int at = std::snprintf(row, sizeof row, "24/11/2026,07:%02d:%02d,%d", tick / 6000 % 60,
            tick / 100 % 60, tick * 10);
        for (int n = 1; n <= 24; ++n)
            at += std::snprintf(row + at, sizeof row - static_cast<std::size_t>(at), ",%d.%03d",
                (tick * n) % 100, tick % 1000);
        text.append(row, static_cast<std::size_t>(at));
        text += "\r\n";
    }
    std::FILE *out = std::fopen(file.c_str(), "wb");
    if (out) {
        std::fwrite(text.data(), 1, text.size(), out);
        std::fclose(out);
    }
    return file;
}
