// The memory of the simulated controller as a text file, one line for each element:
//
//     # anything
//     tag,value
//     M5,1
//     X17,1
//     D100,250
//     CV2200,70000
//
// Bits are 0 or 1, words 0 to 65535, counters 0 to 4294967295. The heading is optional; empty lines
// and lines that begin with '#' are skipped. Elements that are not in the file are 0. No element
// may be in two lines, not even by two names: areas overlap, S1024 is X0. A bit or register outside
// of all areas is named by its Modbus address in decimal digits: bit43521, register12288. With
// several stations all but the lowest are named: 2#D100. With a file of names, names and all tags
// that 'kmr write' accepts can be used, also for inputs: "boiler.temp,21.5".
#pragma once

#include "host/project/named_tag_reader.h"
#include "kmr/simulation/plant.h"

#include <QString>

namespace kmr {

// Reads a file's text into the memories of `plant`. Throws Error (Usage) that names every bad line
// with its number; `file` is the file's name in the error. `names` may be null.
void loadMemory(const QString &text, const QString &file, Plant &plant,
                const NamedTagReader *names = nullptr);

// The text of all elements that aren't 0, by station, in the order of their addresses, bits first.
QString formatMemory(const Plant &plant);

} // namespace kmr
