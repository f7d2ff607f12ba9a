#include <iostream>

#include <vesk/vesk.h>

int main()
{
    DorlRunInitialisers();
    CVeskGdString* text = CVeskGdString::Allocate("consumer");
    CVeskGenericData* length = text->GetProperty("length", 0);
    std::cout << *text << " " << *length << "\n";
    int ok = VeskIsGdDouble(length) && length->GetType() == CVeskGenericData::dtNumber;
    length->Release();
    text->Release();
    return ok ? 0 : 1;
}
