#pragma once

#include <functional>
#include <string>
#include <vector>

/// What one side of a comparison took.
struct Cost {
    double seconds = 0;
    long peakKib = 0;  ///< of the process, or of the program that it ran
};

/// Runs in a process of its own and returns the seconds of the work proper.
using Work = std::function<double()>;

/// Runs the work in a child process, so that neither side inherits the other's memory.
Cost RunWork(const Work& work);

/// Runs a program with its output dropped. \return the seconds that it took; fails the process when it fails.
double RunProgram(const std::vector<std::string>& words);

/// The seconds that a function takes.
double Timed(const std::function<void()>& function);
