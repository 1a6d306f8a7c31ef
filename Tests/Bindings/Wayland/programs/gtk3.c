// A GTK 3 program on Wayland. Its window has no decorations: GTK would draw them into the surface,
// which the launch screen covers completely.
#include <gdk/gdkwayland.h>
#include <gtk/gtk.h>

#include "Tests/Bindings/Wayland/programs/controlled_screen.h"

static gboolean drawArea(GtkWidget* area, cairo_t* cairo, gpointer data) {
  (void)area;
  (void)data;
  cairo_set_source_rgb(cairo, 32 / 255.0, 64 / 255.0, 160 / 255.0);
  cairo_paint(cairo);
  return TRUE;
}

static gboolean failOnClick(GtkWidget* widget, GdkEvent* event, gpointer data) {
  (void)widget;
  (void)event;
  (void)data;
  if (hasScreen()) {
    fprintf(stderr, "the program receives a click under the cover\n");
    _exit(1);
  }
  return FALSE;
}

static gboolean update(gpointer window) {
  GdkWindow* surface = gtk_widget_get_window(window);
  struct wl_display* display = gdk_wayland_display_get_wl_display(gdk_window_get_display(surface));
  updateScreen(display, gdk_wayland_window_get_wl_surface(surface), gdk_window_get_width(surface),
               gdk_window_get_height(surface));
  if (isProgramEndRequested()) {
    endProgram(display);
  }
  return TRUE;
}

int main(int argc, char** argv) {
  gtk_init(&argc, &argv);
  GtkWidget* window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_set_title(GTK_WINDOW(window), "game");
  gtk_window_set_decorated(GTK_WINDOW(window), FALSE);
  gtk_window_set_default_size(GTK_WINDOW(window), 500, 320);
  GtkWidget* area = gtk_drawing_area_new();
  gtk_container_add(GTK_CONTAINER(window), area);
  gtk_widget_add_events(window, GDK_BUTTON_PRESS_MASK);
  g_signal_connect(area, "draw", G_CALLBACK(drawArea), NULL);
  g_signal_connect(window, "button-press-event", G_CALLBACK(failOnClick), NULL);
  gtk_widget_show_all(window);
  handleSignals();
  g_timeout_add(8, update, window);
  gtk_main();
  return 1;
}
