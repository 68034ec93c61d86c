# Installation: tools, library, public headers and the CMake package vantu_orvanta.
