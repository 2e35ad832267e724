#pragma once

#include <string>

// Compares what a client has recorded, "<recorded>/channel-<n>.rec", with what the station says it has sent,
// "<sent>/sent-<n>.rec", and prints a line for each channel. Recorded frames must be whole and equal to the
// byte; only the end of a connection that broke may be missing.
// @return whether all held
bool compareRecordings(const std::string& sent, const std::string& recorded, int channels);
