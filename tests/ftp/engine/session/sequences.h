#pragma once
// What the sequences of a session do on the wire when all goes well, as a table.

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "tests/ftp/engine/session/stage.h"

namespace ftp_script {

struct Sequence {
    std::string name;
    bool logs_in;  // it is a login itself; the others find a session that is logged in
    Steps steps;
    Stage::Sequence run;
    std::string got;  // afterwards: the file "target", or the lines of the listing
    bool never_fails = false;
    bool knows_way_back = false;  // what breaks is tried again, and a session that ended is opened again
};
std::ostream& operator<<(std::ostream& out, const Sequence& sequence);

const std::vector<Sequence>& Sequences();

/// A stage for the sequence, and all that goes before it.
class Setting {
 public:
    explicit Setting(const Sequence& sequence);

    ftp::Result<> Run(Play play = {});
    /// No file came, went or changed but for what the outcome says.
    void ExpectTidy(bool succeeded) const;
    Stage& TheStage() { return stage_; }

 private:
    const Sequence& sequence_;
    Stage stage_;
};

}  // namespace ftp_script
