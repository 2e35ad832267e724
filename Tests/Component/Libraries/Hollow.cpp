// A library that forgot its creator.
extern "C" __attribute__((visibility("default"))) int nothingHere() { return 0; }
