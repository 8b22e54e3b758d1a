#include "app/shared/ftpglob.h"

namespace app {

ftpglob& Globals() {
    static ftpglob globals;
    return globals;
}

}  // namespace app
