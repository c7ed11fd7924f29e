#include "vcanbench.h"

/// What every adapter owes its users, on a virtual link.
class TestVcanContract : public AdapterContractTest
{
    Q_OBJECT

    Pair makePair() override { return {Vcan::makeAdapter("vcan0", false), Vcan::makeAdapter("vcan0", false)}; }
};

QTEST_GUILESS_MAIN(TestVcanContract)
#include "tst_vcancontract.moc"
