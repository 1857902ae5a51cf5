// What a user of the installed library builds first in C++: prints the serial number of a certificate.
#include <vrno.hpp>

#include <cstdio>

int main(int argc, char** argv)
{
    const auto certificate = vrno::Certificate::read(argc > 1 ? argv[1] : "");
    if (!certificate) return 1;
    std::puts(certificate->serialNumber()->c_str());
}
