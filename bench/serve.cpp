// Starts one of the real servers for the benchmarks and keeps it until standard input ends.
//
//   serve vsftpd|pure_ftpd|proftpd|pyftpdlib [ADDRESS [tls]]
//
// Prints "HOST:PORT HOME". With tls it serves nothing else, and the authority that has signed its certificate
// (a PEM file, there as long as the server is) follows: "HOST:PORT HOME AUTHORITY".

#include <cstdio>
#include <iostream>
#include <string>

#include "tests/support/ftp_server.h"

int main(int count, char** arguments) {
    if (count < 2) return 2;
    const bool tls = count > 3 && std::string(arguments[3]) == "tls";
    for (const ftp_test::Make make : ftp_test::AllServers()) {
        if (ftp_test::Name(make) != arguments[1]) continue;
        ftp_test::ServerOptions options;
        if (count > 2) options.address = arguments[2];
        if (tls) options.tls = ftp_test::Tls::Demanded;
        const ftp_test::Server server(make, options);
        std::cout << server.HostField() << " " << server.Home().string();
        if (tls) std::cout << " " << ftp_test::TestAuthority().string();
        std::cout << std::endl;
        while (std::getchar() != EOF) {
        }
        return 0;
    }
    std::cerr << "no such server: " << arguments[1] << "\n";
    return 2;
}
