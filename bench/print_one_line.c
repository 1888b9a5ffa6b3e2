/* The program that the start of ours is compared with. */
#include <stdio.h>

int main(void)
{
    puts("One line, as the smallest of programs prints it");
    return 0;
}
