# Makes linker-local symbols (l...) of the labels in front of anonymous constants, which are assembler-local ones (L...).
s/\bL(CPI|___const|_switch\.table|__unnamed_[0-9])/l\1/g
