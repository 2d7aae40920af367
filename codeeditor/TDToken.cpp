#include "codeeditor/TDToken.h"

const TDToken *TDToken::EOFToken()
{
    static const TDToken end;
    return &end;
}
