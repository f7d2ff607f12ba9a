#include <dorl/DorlDiag.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::string s_dumped;
std::string s_asserted;
std::string s_ran;

void CaptureDump(const char* text) { s_dumped += text; }

void CaptureAssert(const char* expression, const char* source, int line)
{
    s_asserted += std::string(expression) + "|" + source + "|" + std::to_string(line);
}

void RunStatic() { s_ran += "S"; }
void RunFirst() { s_ran += "1"; }
void RunSecond() { s_ran += "2"; }
void RunThird() { s_ran += "3"; }
void RunNested()
{
    s_ran += "N";
    DorlAddInitialiser(RunThird);
}

const int s_staticRegistration = DorlAddInitialiser(RunStatic);

void ReportA() { s_ran += "a"; }
void ReportB() { s_ran += "b"; }

} // namespace

TEST(DorlDiag, DumpsAndAssertionsGoToTheInstalledHandlerUntilRestored)
{
    EXPECT_EQ(DorlSetDumpHandler(CaptureDump), nullptr);
    EXPECT_EQ(DorlSetAssertHandler(CaptureAssert), nullptr);

    std::string longText(1000, 'x');
    DorlDump("%d:%s", 7, longText.c_str());
    EXPECT_EQ(s_dumped, "7:" + longText);
    DorlDisplayAssert("p != 0", "Widget.cpp", 42);
    EXPECT_EQ(s_asserted, "p != 0|Widget.cpp|42");

    EXPECT_EQ(DorlSetDumpHandler(nullptr), CaptureDump);
    EXPECT_EQ(DorlSetAssertHandler(nullptr), CaptureAssert);
    testing::internal::CaptureStderr();
    DorlDump("line %d\n", 1);
    DorlDisplayAssert("x > 0", "Loader.cpp", 7);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "line 1\nAssertion failed: x > 0, Loader.cpp line 7\n");
    EXPECT_EQ(s_dumped, "7:" + longText);
}

TEST(DorlDiag, InitialisersRunOnceInRegistrationOrder)
{
    EXPECT_NE(s_staticRegistration, 0);
    s_ran.clear();
    DorlAddInitialiser(RunFirst);
    DorlAddInitialiser(RunNested);
    EXPECT_NE(DorlAddInitialiser(RunSecond), 0);
    DorlRunInitialisers();
    EXPECT_EQ(s_ran, "S1N23");
    DorlRunInitialisers();
    EXPECT_EQ(s_ran, "S1N23");
    DorlAddInitialiser(RunFirst);
    DorlRunInitialisers();
    EXPECT_EQ(s_ran, "S1N231");
}

TEST(DorlDiag, ProcessInfoHandlersRunByName)
{
    s_ran.clear();
    EXPECT_EQ(DorlRunProcessInfoHandler("objects"), 0);
    DorlRegisterProcessInfoHandler("objects", ReportA);
    EXPECT_EQ(DorlRunProcessInfoHandler("objects"), 1);
    DorlRegisterProcessInfoHandler("objects", ReportB);
    EXPECT_EQ(DorlRunProcessInfoHandler("objects"), 1);
    EXPECT_EQ(DorlRunProcessInfoHandler("Objects"), 0);
    DorlRegisterProcessInfoHandler("objects", nullptr);
    EXPECT_EQ(DorlRunProcessInfoHandler("objects"), 0);
    EXPECT_EQ(DorlRunProcessInfoHandler(nullptr), 0);
    EXPECT_EQ(s_ran, "ab");
}
