// Tests of LensName.h: different spellings of one lens, and lenses whose names differ in a single mark.
#include "LensName.h"

#include <QTest>

class tst_LensName : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void numbers_data();
    void numbers();
    void comparison_data();
    void comparison();
    void alternatives();
};

void tst_LensName::numbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>(
        "expected"); // focal lengths, apertures, maker, marks, words, codes, converter, generation
    const auto row = [](const char *text, const char *expected) {
        QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(expected);
    };
    row("EF-S18-55mm f/3.5-5.6 IS", "18-55 f/3.5-5.6 canon|efs,stabilized||||");
    row("XF23mmF1.4 R", "23-23 f/1.4-1.4 fujifilm|xf|r|||");
    row("LUMIX G VARIO 14-42/F3.5-5.6", "14-42 f/3.5-5.6 panasonic|g,lumix|vario|||");
    row("SUMMILUX 1:1.7/28 ASPH.", "28-28 f/1.7-1.7 leica|summilux|asph|||");
    row("smc Pentax-M Macro 1:4 100mm", "100-100 f/4-4 pentax|macro,pkm||||");
    row("Industar-50-2 3.5/50", "50-50 f/3.5-3.5 ||2,industar|50||");
    row("Voigtländer Color-Skopar X 1:2,8/50", "50-50 f/2.8-2.8 voigtländer|skopar|color,x|||");
    row("TAMRON SP 90mm F/2.8 Di VC USD MACRO1:1 F004", "90-90 f/2.8-2.8 tamron|di,macro,stabilized,usd|sp|f004||");
    row("Olympus M.Zuiko Digital ED 12-40mm ƒ/2.8 Pro", "12-40 f/2.8-2.8 olympus|mzuiko|digital,ed,pro|||");
    row("Nikon AF-S VR Nikkor 400mm f_2.8G ED", "400-400 f/2.8-2.8 nikon|afs,g,stabilized|ed|||");
    row("AF 17-35 f/2.8", "17-35 f/2.8-2.8 |af||||");
    row("E 35-150mm F2.0-F2.8 A058", "35-150 f/2-2.8 tamron|e||a058||");
    row("Tokina AT-X 11-20 F2.8 (AF 11-20mm f/2.8)", "11-20 f/2.8-2.8 tokina|af||11,20||");
    row("Canon EF-S 18-55mm f/3.5-5.6 [II] + EF 1.4x", "18-55 f/3.5-5.6 canon|efs|||1.4|ii");
    row("OLYMPUS 14-42mm Lens", "14-42 f/0-0 olympus|||||");
    row("Samsung Galaxy S9+ Rear Camera", "0-0 f/0-0 samsung||camera,galaxy,rear,s9|||");
}

void tst_LensName::numbers()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    const LensName name = ParseLensNames(text).value(0);
    const auto sorted = [](const QSet<QString> &set) {
        QStringList list = set.values();
        list.sort();
        return list.join(QLatin1Char(','));
    };
    QCOMPARE(name.text, text);
    QCOMPARE(QStringLiteral("%1-%2 f/%3-%4 %5|%6|%7|%8|")
                     .arg(name.minFocalMm)
                     .arg(name.maxFocalMm)
                     .arg(name.maxAperture)
                     .arg(name.maxApertureAtTele)
                     .arg(name.maker, sorted(name.marks), sorted(name.words), sorted(name.codes))
                 + name.converter + QLatin1Char('|') + name.maybeGeneration,
             expected);
}

void tst_LensName::comparison_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QString>("offered");
    QTest::addColumn<QString>("why"); // the contradiction; empty: they fit
    const auto same = [](const char *a, const char *b) {
        QTest::addRow("%s = %s", a, b) << QString::fromUtf8(a) << QString::fromUtf8(b) << QString();
    };
    const auto other = [](const char *a, const char *b, const char *why) {
        QTest::addRow("%s, not %s", a, b) << QString::fromUtf8(a) << QString::fromUtf8(b) << QString::fromUtf8(why);
    };
    // First as written by the camera or exiftool, then as in lensfun's database or by the maker.
    same("EF-S18-55mm f/3.5-5.6 IS", "Canon EF-S 18-55mm f/3.5-5.6 IS");
    same("RF100-500mm F4.5-7.1 L IS USM", "Canon RF 100-500mm F4.5-7.1L IS USM");
    same("AF-S DX Zoom-Nikkor 18-70mm f/3.5-4.5G IF-ED", "Nikkor AF-S 18-70mm f/3.5-4.5G DX IF-ED");
    same("AF-S DX VR Zoom-Nikkor 18-200mm f/3.5-5.6G IF-ED [II]",
         "Nikon AF-S DX VR Zoom-Nikkor 18-200mm f/3.5-5.6G IF-ED II");
    same("XF50mmF2 R WR", "XF 50mm f/2 R WR");
    same("18-50mm F2.8 DC DN | Contemporary 021", "Sigma 18-50mm f/2.8 DC DN | C");
    same("E 17-28mm F2.8-2.8 A046", "Tamron 17-28mm f/2.8 Di III RXD A046");
    same("LUMIX G VARIO 45-200/F4.0-5.6", "Panasonic Lumix G Vario 45-200mm f/4.0-5.6 Mega O.I.S.");
    same("OLYMPUS M.40-150mm F2.8", "Olympus M.Zuiko Digital ED 40-150mm F2.8 Pro");
    same("50mm F1.4 DG HSM | Art 014", "SIGMA 50mm F1.4 DG HSM A014");
    same("Canon EF 85mm f/1.2L USM Mark II", "Canon EF 85mm f/1.2L II USM");
    same("smc PENTAX-DA★ 16-50mm F2.8 ED AL [IF] SDM", "smc Pentax-DA 16-50mm f/2.8 ED AL IF SDM");
    same("Samyang AF 85mm F1.4 EF", "SAMYANG AF 85mm F1.4");
    same("Loxia 2/50", "Zeiss Loxia 50mm f/2 Planar T*");
    same("Makro-Planar T* 2/100 ZF.2", "Zeiss Makro-Planar T* 2/100");
    same("TS-E90mm f/2.8", "Canon TS-E 90mm f/2.8");
    same("EF70-200mm f/4L USM +2x", "Canon EF 70-200mm f/4L USM + EF 2x III extender");
    same("OLYMPUS M.40-150mm F2.8 + MC-14", "Olympus M.Zuiko Digital ED 40-150mm f/2.8 PRO + 1.4× conv.");
    same("E 28-75mm F2.8-2.8", "Tamron E 28-75mm F2.8-2.8"); // as the lens reports itself
    same("Jupiter-9 85mm f/2", "KMZ Jupiter-9 85mm f/2");
    same("OLYMPUS M.12-100mm F4.0", "Olympus M.Zuiko Digital ED 12-100mm f/4.0 IS PRO");
    same("NIKKOR Z MC 105mm f/2.8 VR S", "Nikon Nikkor Z Micro 105mm F2.8 VR S");
    same("ＥＦ２４－７０ｍｍ ｆ／２．８Ｌ Ⅱ ＵＳＭ", "Canon EF 24‑70 mm 1:2,8 L II USM");
    same("Sony DT 35mm F1.8 SAM (SAL35F18)", "Sony DT 35mm f/1.8 SAM");
    same("Tamron SP AF 17-50mm f/2.8 XR Di II LD Aspherical (IF) (A16NII)",
         "Tamron AF 17-50mm f/2.8 XR Di-II LD (Model A16)");
    // Names that differ in one number or mark.
    other("EF-S18-55mm f/3.5-5.6 IS", "Canon EF-S 18-55mm f/3.5-5.6 IS II", "another generation");
    other("EF-S18-55mm f/3.5-5.6 IS", "Canon EF-S 18-55mm f/3.5-5.6 IS STM", "another focus motor");
    other("EF-S18-55mm f/3.5-5.6 IS", "Canon EF-S 18-55mm f/3.5-5.6", "another stabilizer");
    other("EF16-35mm f/2.8L USM", "Canon EF 17-35mm f/2.8L USM", "17-35 mm");
    other("EF70-200mm f/2.8L IS USM", "Canon EF 70-200mm f/4L IS USM", "f/4");
    other("EF70-200mm f/2.8L IS USM", "Canon EF 70-200mm f/2.8L IS USM + EF 2x II extender",
          "with and without a converter");
    other("AF-S DX Nikkor 35mm f/1.8G", "AF-S Nikkor 35mm f/1.8G ED", "another format");
    other("AF Nikkor 50mm f/1.8D", "Nikon AI-S Nikkor 50mm f/1.8", "another mount");
    other("AF Nikkor 50mm f/1.8D", "Yongnuo YN 50mm f/1.8", "another maker");
    other("Tamron AF 28-300mm f/3.5-6.3 XR LD Aspherical (IF) (185D)",
          "Tamron AF 28-300mm f/3.5-6.3 XR Di LD Aspherical (IF)", "another format");
    other("TAMRON SP 90mm F/2.8 Di VC USD MACRO1:1 F004", "TAMRON SP 90mm F/2.8 Di VC USD MACRO1:1 F017",
          "another model number");
    other("85mm F1.4 DG DN | Art 020", "Sigma 85mm F1.4 DG HSM | Art 016", "another format");
    other("Olympus Zuiko Digital ED 14-42mm F3.5-5.6", "Olympus M.Zuiko Digital ED 14-42mm F3.5-5.6", "another mount");
    other("50mm F1.4 DG HSM | Art 014", "Sigma 50mm f/1.4 EX DG HSM", "another series");
    other("XF23mmF1.4 R LM WR", "XF 23mm f/1.4 R", "another design");
    other("70-300mm F4-5.6 APO DG Macro", "Sigma 70-300mm f/4-5.6 DG Macro", "another design");
    other("EF28-80mm f/3.5-5.6 V USM", "Canon EF 28-80mm f/3.5-5.6 USM", "another generation");
    other("FE 24-70mm F2.8 GM", "Sony FE 24-70mm f/2.8 GM II", "another generation");
    other("iPhone XR back camera 4.25mm f/1.8", "iPhone 11 Pro back triple camera 4.25mm f/1.8", "another camera");
    other("OLYMPUS 14-42mm Lens", "Olympus Zuiko Digital ED 14-42mm F3.5-5.6",
          "too little in common"); // too few details
    other("Sigma 8mm f/3.5 EX DG Circular", "Sigma 8mm f/3.5 EX DG", "another kind");
    other("AF-S VR Zoom-Nikkor 70-200mm f/2.8G IF-ED", "Nikon AF-S Nikkor 70-200mm f/2.8E FL ED VR 164",
          "another type");
    other("NIKKOR Z 50mm f/1.8 S", "Nikon Lens Series E 50mm f/1.8", "another mount");
    other("E 18-200mm F3.5-6.3 OSS", "Sony E 18-200mm f/3.5-6.3 OSS LE", "another kind");
    other("E 28-75mm F2.8-2.8", "Sony 28-75mm F2.8 SAM (SAL2875)", "another mount");
    other("Samyang AF 35mm F2.8", "Samyang 35mm T1.5 Cine Lens", "another generation");
    other("smc PENTAX-FA 50mm F1.4", "smc Pentax-A 50mm f/1.4", "another mount");
    other("smc PENTAX-FA 50mm F1.4", "Pentax Super-Takumar 50mm f/1.4", "another mount");
    other("smc PENTAX-DA 40mm F2.8 Limited", "smc Pentax-DA 40mm f/2.8 XS", "another kind");
    other("OLYMPUS M.14-42mm F3.5-5.6", "Olympus M.Zuiko Digital ED 14-42mm f/3.5-5.6 EZ", "another kind");
    other("OLYMPUS M.14-42mm F3.5-5.6 II R", "Olympus M.Zuiko Digital 14-42mm f/3.5-5.6 II", "another generation");
    other("XF27mmF2.8", "Fujifilm X100V-lens", "too little in common");
    other("Summicron-M 1:2/35 ASPH.", "Contax G Planar T* 2/35", "another maker");
    other("Elmarit-M 1:2.8/28 ASPH.", "Leica Elmarit-M 1:2.8/28", "another generation");
    other("17-70mm F2.8-4 DC MACRO OS HSM | Contemporary 013", "Sigma 17-70mm f/2.8-4 DC Macro OS HSM",
          "another generation");
    other("EF70-200mm f/4L USM +2x", "Canon EF 70-200mm f/4L USM + EF 1.4x extender", "another converter");
    other("AF-S Nikkor 300mm f/4D + TC-14E", "Nikkor AF-S 300mm f/4D + TC-20E", "another converter");
    other("Zeiss Planar T* 1.4/50 ZE", "Zeiss Milvus 1.4/50", "another series");
    other("Zeiss Milvus 1.4/85", "Zeiss Otus 85mm f/1.4", "another series");
    other("Batis 2.8/21", "Zeiss 21mm f/2.8 Distagon", "another series");
    other("Zeiss Planar T* 2/50 ZM", "Zeiss Loxia 50mm f/2 Planar T*", "another series");
    other("Zeiss Planar T* 2/50 ZM", "Zeiss Makro-Planar T* 2/50", "another kind");
    other("Voigtländer Nokton 50mm f/1.2", "Voigtländer Heliar 50mm f/1.2", "another optical design");
    other("Samyang AF 85mm F1.4 EF", "Samyang 85mm f/1.4 IF UMC Aspherical", "another generation");
    other("Samyang AF 14mm F2.8", "Samyang 14mm f/2.8 AE ED AS IF", "another generation");
    other("Sigma 24-70mm f/2.8 EX DG Macro", "Sigma 24-70mm f/2.8 IF EX DG HSM", "another kind");
    other("Sigma 24-70mm f/2.8 IF EX DG HSM", "Sigma 24-70mm f/2.8 EX DG Macro", "another kind");
    other("FE 100mm F2.8 STF GM OSS", "Sony FE 100mm F2.8 Macro G OSS", "another type");
    other("Meike Blue 50mm f/2", "Meike Red 50mm f/2", "other words");
    other("RF70-200mm F2.8 L IS USM", "Canon RF 70-200mm F2.8L IS USM Z", "another kind");
    other("RF85mm F1.2 L USM DS", "Canon RF 85mm F1.2L USM", "other words");
    other("EF24-70mm f/2.8L USM", "Canon EF24-70mm F2.8L Ⅱ USM", "another generation");
    other("Canon EF-S 18-55mm f/3.5-5.6 [II]", "Canon EF-S 18-55mm f/3.5-5.6 III", "another generation");
    other("EF50mm f/1.8", "Canon FDn 50mm 1:1.8", "other words");
    other("Canon EF 50mm f/1.4 USM (Metabones Speed Booster)", "Canon EF 50mm f/1.4 USM", "other words");
    other("1 NIKKOR VR 10-30mm f/3.5-5.6 PD-ZOOM", "1 NIKKOR VR 10-30mm f/3.5-5.6", "another kind");
    other("NIKKOR Z 50mm f/1.4", "Nikon 1 Nikkor 50mm f/1.4", "other words");
    other("NIKKOR Z MC 50mm f/2.8", "NIKKOR Z 50mm f/2.8", "another kind");
    other("AF-S Nikkor 50mm f/1.8G", "Nikkor 50mm f/1.8 AI", "another mount");
    other("AF-I Nikkor 300mm f/2.8D IF-ED", "AF-S Nikkor 300mm f/2.8D IF-ED", "another mount");
    other("FE 35mm F1.4 GM", "Sony 35mm f/1.4 G", "another type");
    other("Minolta AF 85mm F1.4 G (D) Limited", "Minolta AF 85mm f/1.4G (D)", "another kind");
    other("smc PENTAX-D FA Macro 50mm F2.8", "smc PENTAX-FA Macro 50mm F2.8", "another mount");
    other("XF27mmF2.8", "Fujifilm XF 27mm f/2.8 R WR", "another design");
    other("Leica D Summilux 25mm F1.4 Asph.", "Leica DG Summilux 25mm f/1.4 Asph.", "another image circle");
    other("Sigma 30mm F1.4 EX DC HSM", "Sigma 30mm F1.4 DC HSM", "another series");
    other("Sigma 28-70mm F2.8 EX ASP DF", "Sigma 28-70mm F2.8 EX DG", "another image circle");
    other("Tamron 17-35mm f/2.8-4 Di OSD (A037)", "Tamron SP AF 17-35mm f/2.8-4 Di LD Aspherical (IF)",
          "another focus motor");
    other("Carl Zeiss Distagon T* 2,8/21 ZE", "Contax Zeiss 21mm f/2.8 Distagon", "another series");
    other("Manual Lens", "Manual Lens", "too little in common");
    other("M-42", "M-42", "too little in common");
    // Makers identified by name, by an unknown word, or by the mount.
    other("Jupiter-9 85mm f/1.8", "Canon EF 85mm f/1.8", "another maker");
    other("YN50mm f/1.8 II", "Canon EF 50mm f/1.8 MkII", "another maker");
    other("Bower 14mm f/2.8", "Sigma 14mm f/2.8 EX", "another maker");
    other("E 16mm F2.8", "KMZ Zenitar MC 16mm f/2.8", "another maker");
    other("MC Zenitar 16mm f/2.8", "E 16mm F2.8", "another maker");
    other("E 16mm F2.8", "Meike 16mm F2.8", "another maker");
    other("Sigma 18-200mm f/3.5-6.3 DC Macro OS HSM", "E 18-200mm F3.5-6.3 OSS", "another maker");
    other("Samsung NX 16-50 OIS", "E PZ 16-50mm F3.5-5.6 OSS", "another maker");
    other("smc Pentax K 30", "E 30mm", "another maker");
}

void tst_LensName::comparison()
{
    QFETCH(QString, wanted);
    QFETCH(QString, offered);
    QFETCH(QString, why);
    const NameMatch match = CompareLensNames(ParseLensNames(wanted).value(0), ParseLensNames(offered).value(0));
    QCOMPARE(match.why, why);
    QCOMPARE(match.fits, why.isEmpty());
}

void tst_LensName::alternatives()
{
    const auto names = ParseLensNames(
        QStringLiteral("Canon EF 28-70mm f/2.8L USM or Sigma 28-70mm f/2.8 EX | Sigma 35mm F1.4 DG HSM | Art 012"));
    QCOMPARE(names.size(), 3);
    QCOMPARE(names[2].codes, QSet<QString>{QStringLiteral("012")});
    QCOMPARE(names[0].maker, QStringLiteral("canon"));
    QCOMPARE(names[1].maker, QStringLiteral("sigma"));
    const LensName wanted = names[0];
    // The exact spelling has a better score than others that fit.
    const auto score = [&wanted](const char *text) {
        return CompareLensNames(wanted, ParseLensNames(QString::fromUtf8(text)).value(0)).score;
    };
    QVERIFY(score("Canon EF 28-70mm f/2.8L USM") > score("EF 28-70mm f/2.8L USM Ultrasonic"));
}

QTEST_APPLESS_MAIN(tst_LensName)
#include "LensName_test.moc"
