#include "app/openers.h"
#include "app/program.h"
#include "autoread/setauto.h"

namespace quorvel {

void openAutoread(Program& program)
{
    program.form1.setOpener("AutomaticReading",
                            [&program] { SetAuto(program.workplace, program.book, &program.form1).exec(); });
}

} // namespace quorvel
