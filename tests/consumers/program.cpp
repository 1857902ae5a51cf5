// What a user of the installed library builds first in C++: prints the serial number of a certificate.
#include <vrno.hpp>

#include <cstdio>

int main(int argc, char** argv)
{
    auto context = vrno::Context::make();
    const auto file = context->readCertificate(argc > 1 ? argv[1] : "");
    if (!file) return 1;
    auto certificate = vrno::Certificate::load(*file);
    if (!certificate) return 1;
    std::puts(certificate->serialNumber()->c_str());
}
