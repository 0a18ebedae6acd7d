#include "correlogram/InputError.h"
#include "correlogram/Plot.h"
#include "tools/correlogram/CorrelogramSupport.h"

#include "bss/exception/WExceptionCatalogue.h"

#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

using namespace correlogram;
using namespace correlogram_test;

namespace {

using Tree = boost::property_tree::ptree;

Analysis Example(const std::string& file) {
    Curve curve = MakeCurve([](double t) { return 0.9 * std::exp(-2000.0 * t) * (1.0 + 1e4 * t * t); }, 1e-3);
    curve.file = file;
    return Analyse(std::move(curve), {}, 3e-7);
}

// Calls visit(name, element) for every element.
template <class Visit>
void Walk(const Tree& tree, const Visit& visit) {
    for (const auto& [name, child] : tree) {
        if (name != "<xmlattr>") {
            visit(name, child);
            Walk(child, visit);
        }
    }
}

} // namespace

TEST(CorrelogramPlot, DrawsEveryPointInsideThePictureAsWellFormedXml) {
    const Analysis analysis = Example("a<b>&\"c\".csv");
    std::istringstream stream(DrawPlot(analysis));
    Tree tree;
    boost::property_tree::read_xml(stream, tree);
    int circles = 0;
    int paths = 0;
    std::string texts;
    Walk(tree, [&](const std::string& name, const Tree& element) {
        if (name == "circle") {
            ++circles;
            EXPECT_TRUE(element.get<double>("<xmlattr>.cx") > 100.0 &&
                        element.get<double>("<xmlattr>.cx") < 932.0);
            EXPECT_TRUE(element.get<double>("<xmlattr>.cy") > 76.0 &&
                        element.get<double>("<xmlattr>.cy") < 650.0);
        }
        paths += name == "path" ? 1 : 0;
        texts += name == "text" || name == "tspan" ? element.data() + "|" : "";
    });
    const int points = static_cast<int>(analysis.curve.lag.size());
    EXPECT_EQ(circles, points + 3 * static_cast<int>(analysis.count) + 1); // one in the legend
    EXPECT_EQ(paths, 6);                                                   // curves and residuals
    for (const char* text : {"a<b>&\"c\".csv|", "lag time (s)|", "residual|", "exponential: R|",
                             "cumulants: R|", "gaussian-cumulants: R|", "632.8 nm, 90\xC2\xB0"}) {
        EXPECT_NE(texts.find(text), std::string::npos) << text;
    }
}

TEST(CorrelogramPlot, FailedFitsAreNamedAndNotDrawn) {
    Analysis analysis = Example("sample.csv");
    analysis.fits[1].failure = std::make_unique<bss::WNEFitFailed>(L"test");
    const std::string plot = DrawPlot(analysis);
    EXPECT_NE(plot.find(">cumulants: failed<"), std::string::npos);
    EXPECT_EQ(plot.find("nan"), std::string::npos);
}

TEST(CorrelogramPlot, SavingReplacesWholeFilesAndLeavesNothingElse) {
    const ScratchFolder folder;
    const std::string path = folder.Write("plot.svg", "old");
    SaveWhole(path, "new");
    EXPECT_EQ(ReadText(path), "new");
    SaveWhole(folder.Path("Gr\xC3\xB6\xC3\x9F"
                          "e \xE2\x82\xAC.svg"),
              "wide");
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"Gr\xC3\xB6\xC3\x9F"
                                                        "e \xE2\x82\xAC.svg",
                                                        "plot.svg"}));

    std::filesystem::create_directory(PathOf(folder.Path("folder")));
    const auto refusal = [](const std::string& file) {
        try {
            SaveWhole(file, "bytes");
        } catch (const InputError& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(refusal(folder.Path("folder")),
              "Cannot write " + Quote(folder.Path("folder")) + ": it is a folder.");
    EXPECT_EQ(refusal(folder.Path("none/plot.svg")), "Cannot write " + Quote(folder.Path("none/plot.svg")) +
                                                         ": no file can be made in that folder.");
    EXPECT_EQ(folder.Names().size(), 3U);
}
